/** Pixels row by row, from the top left. */
export interface Image {
  /** `width * height * channels` numbers. */
  data: Uint8Array | Uint8ClampedArray | Int8Array | Uint16Array | Int16Array | Uint32Array | Int32Array | Float32Array;
  width: number;
  height: number;
  /** 1 for grey, the default; 3 or 4 for red, green, blue and opacity, which count as luminance. */
  channels?: 1 | 3 | 4;
}

export type Polarity = "bright" | "dark";

/** What to look for. Everything left open is estimated from the image. */
export interface FindOptions {
  /** Typical radius in pixels, for objects of 0.4 to 2.5 times this radius; or the range of radii. */
  radius?: number | [low: number, high: number];
  polarity?: Polarity;
  /** Objects of a lower score are left out; 0.5 unless given. */
  minScore?: number;
}

/** An object. Pixel centers are at whole numbers. */
export interface FoundObject {
  x: number;
  y: number;
  /** Of the circle of the same area, in pixels. */
  radius: number;
  /** 0 to 1: how surely this is an object. */
  score: number;
  /** Share of the outline inside the image that has an edge. */
  coverage: number;
}

export interface Settings {
  /** Typical radius of the objects in pixels; 0 for none. */
  radius: number;
  polarity: Polarity;
  /** 0 (nothing was found) to 1. */
  confidence: number;
}

export interface SettingsEstimate extends Settings {
  /** The best of the other polarity. */
  runnerUp: Settings;
}

export interface FindResult {
  /** Highest score first. */
  objects: FoundObject[];
  settings: SettingsEstimate;
  options: FindOptions;
}

/** Finds round objects of unknown size and brightness, as `orva find` does. */
export function findObjects(image: Image, options?: FindOptions): Promise<FindResult>;

/** The typical radius and the polarity of the objects. */
export function estimateSettings(image: Image): Promise<SettingsEstimate>;

export interface SegmentOptions extends FindOptions {
  /**
   * The objects to label and no others, such as a selection of those that findObjects() found. Unless given, they are
   * searched for, and regions that stand out like theirs are labelled, too.
   */
  objects?: Pick<FoundObject, "x" | "y" | "radius">[] | FoundObject[];
  /** The settings of the given objects, as findObjects() returned them. */
  settings?: SettingsEstimate;
  /** The brightness that is measured, an image of the same size; that of the image unless given. */
  measure?: Image;
  /** Smaller regions are left out, in pixels. */
  minArea?: number;
  /** Larger regions are left out, in pixels. */
  maxArea?: number;
  /** Whether regions that touch the border of the image are left out. */
  excludeBorder?: boolean;
}

/** A label per pixel: 0 in the background of segment(), -1 in that of measure(). */
export interface Labels {
  data: Int32Array;
  width: number;
  height: number;
}

/** A region's measurements in pixels, with the definitions of scikit-image's `regionprops_table`. */
export interface RegionMeasures {
  label: number;
  centroidRow: number;
  centroidColumn: number;
  area: number;
  equivalentDiameterArea: number;
  perimeter: number;
  eccentricity: number;
  majorAxisLength: number;
  minorAxisLength: number;
  orientation: number;
  solidity: number;
  meanIntensity: number;
  minIntensity: number;
  maxIntensity: number;
  intensityStd: number;
  minRow: number;
  minColumn: number;
  endRow: number;
  endColumn: number;
  touchesBorder: boolean;
}

export interface SegmentResult {
  labels: Labels;
  /** The region of label k at k - 1. */
  regions: (RegionMeasures & { score: number })[];
  /** The object of each region; its `coverage` is 0 for one that has no center that the search finds. */
  objects: FoundObject[];
  /** Undefined for objects that were given without settings. */
  settings?: SettingsEstimate;
  options: FindOptions & Pick<SegmentOptions, "minArea" | "maxArea" | "excludeBorder">;
}

/** Finds round objects and the pixels of each, and measures them, as `orva segment` does. */
export function segment(image: Image, options?: SegmentOptions): Promise<SegmentResult>;

/** Measures labelled regions; label 0 is background. */
export function measureLabels(
  labels: { data: Exclude<Image["data"], Float32Array>; width: number; height: number },
  image: Image,
): Promise<RegionMeasures[]>;

export interface MeasureOptions {
  /** Regions are made of pixels of at least this brightness. */
  threshold?: number;
  /** The scale in pixels of the blobs from which the threshold is computed; 5 unless given. */
  auto?: number;
  /** Smaller regions are left out, in pixels. */
  minSize?: number;
  /** Larger regions are left out, in pixels. */
  maxSize?: number;
  /** Whether holes are filled first. */
  fill?: boolean;
}

export interface ThresholdedRegion {
  xmin: number;
  xmax: number;
  ymin: number;
  ymax: number;
  zmin: number;
  zmax: number;
  cx: number;
  cy: number;
  cz: number;
  radius: number;
  npix: number;
  mean: number;
  var: number;
}

export interface MeasureResult {
  threshold: number;
  /** The region of label k at k. */
  regions: ThresholdedRegion[];
  labels: Labels;
  options: MeasureOptions;
}

/** Thresholds an image and measures its bright regions, as `orva measure` does. */
export function measure(image: Image, options?: MeasureOptions): Promise<MeasureResult>;

/** The options of `orva vote`. */
export interface VoteOptions {
  polarity?: Polarity | "both";
  minRadius?: number;
  maxRadius?: number;
  coneWidth?: number;
  sigma?: number;
  gradient?: number;
  relativeGradient?: number;
  threshold?: number;
  relativeThreshold?: number;
  edges?: boolean;
  power?: number;
}

export interface Center {
  x: number;
  y: number;
  weight: number;
}

export interface VoteResult {
  centers: Center[];
  settings: { coneWidth: number; sigma: number; gradient: number };
  options: VoteOptions;
}

/** Finds the centers of round objects by circular voting, as `orva vote` does. */
export function vote(image: Image, options?: VoteOptions): Promise<VoteResult>;

/** What files of results say of the image. */
export interface ImageFacts {
  /** Its name. */
  file?: string;
  /** Its page in the file, counted from 0. */
  frame?: number;
  /** Its channel, slice and time, in a file with several. */
  c?: number;
  z?: number;
  t?: number;
  /** Whether several axes of the file have more than one plane; unless given, whether several of c, z and t are. */
  hyperstack?: boolean;
  /** Width and height of a pixel in micrometres. */
  pixelSize?: number;
  /** The image that was measured, as in SegmentOptions. */
  measure?: Image;
}

export type TableFormat = "csv" | "json" | "geojson" | "geojson.gz" | "roi" | "napari";

/**
 * The bytes of a file as the command writes it: a table, a PNG picture of the image with the
 * objects drawn ("overlay"), or a PNG image of the labels.
 */
export function encode(
  image: Image,
  result: FindResult | VoteResult,
  format: TableFormat | "overlay",
  facts?: ImageFacts,
): Promise<Uint8Array>;
export function encode(
  image: Image,
  result: SegmentResult,
  format: TableFormat | "overlay" | "labels",
  facts?: ImageFacts,
): Promise<Uint8Array>;

/** Ends the worker and frees its memory; the next call starts another. */
export function close(): void;
