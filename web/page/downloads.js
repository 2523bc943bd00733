// Results as files.
import { encode } from "orva";

// Saves `bytes` under a name.
export function save(name, bytes, type) {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(new Blob([bytes], { type }));
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 10000);
}

const stemOf = (name) => name.replace(/\.[^.]*$/, "").replace(/\.ome$/i, "");

// [what encode() makes, of regions or of objects or as drawn, the ending of the name, the type]
const FILES = {
  "find-csv": ["csv", "objects", ".csv", "text/csv"],
  "segment-csv": ["csv", "regions", "_regions.csv", "text/csv"],
  geojson: ["geojson", "drawn", ".geojson", "application/geo+json"],
  roi: ["roi", "drawn", "_rois.zip", "application/zip"],
  labels: ["labels", "regions", "_labels.png", "image/png"],
  overlay: ["overlay", "drawn", "_overlay.png", "image/png"],
};

// Saves what was found in an image.
export async function download(project, item, format) {
  await project.settled(item);
  const [encoding, of, ending, type] = FILES[format];
  const isOfRegions = of === "regions" || (of === "drawn" && project.settings.of === "regions");
  const plane = await project.plane(item);
  const result = isOfRegions ? await project.regions(item) : project.circles(item);
  if (!result) return;
  save(stemOf(item.name) + ending, await encode(plane, result, encoding, factsOf(project, item)), type);
}

// What the command knows of the image from its file.
function factsOf({ settings }, { name, source }) {
  const several = (count, value) => (count > 1 ? Math.min(value, count - 1) : undefined);
  const isProjected = settings.slice === "max";
  const plane = {
    c: several(source.channels, settings.channel),
    z: isProjected ? undefined : several(source.slices, settings.slice),
    t: several(source.times, settings.time),
  };
  const frame = source.pageOf({ c: plane.c ?? 0, z: plane.z ?? 0, t: plane.t ?? 0 });
  const hyperstack = [source.channels, source.slices, source.times].filter((count) => count > 1).length > 1;
  return { file: name, frame, ...plane, hyperstack, pixelSize: source.pixelSize };
}

const field = (text) => (/[",\n\r]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text);

// The table of counts, with the columns of the command's summary.csv.
export function summaryOf(project) {
  const rows = ["file,width,height,objects,radius,polarity,confidence,seconds"];
  for (const item of project.items) {
    const result = project.result(item);
    if (!result) continue;
    const { radius, polarity, confidence } = result.settings;
    rows.push(
      [
        field(item.name), item.width, item.height, result.objects.length, radius.toFixed(1), polarity,
        confidence.toFixed(2), item.seconds.toFixed(3),
      ].join(),
    );
  }
  return `${rows.join("\n")}\n`;
}
