// The functions of the package on top of `perform(request)`, which runs a request in the module.
import {
  checkedImage, checkedLabels, checkedObjects, checkedOptions, checkedSettings, checkedVote, kindOf, nativeOptions,
  optionsObject,
} from "./checks.js";

const REGION = [
  "label",
  "centroidRow",
  "centroidColumn",
  "area",
  "equivalentDiameterArea",
  "perimeter",
  "eccentricity",
  "majorAxisLength",
  "minorAxisLength",
  "orientation",
  "solidity",
  "meanIntensity",
  "minIntensity",
  "maxIntensity",
  "intensityStd",
  "minRow",
  "minColumn",
  "endRow",
  "endColumn",
  "touchesBorder",
];

function objectsIn({ objects }) {
  const list = [];
  for (let i = 0; i < objects.length; i += 5) {
    const [x, y, radius, score, coverage] = objects.subarray(i, i + 5);
    list.push({ x, y, radius, score, coverage });
  }
  return list;
}

// Objects with these names of the numbers, row by row.
function rowsIn(numbers, names) {
  const rows = [];
  for (let i = 0; i < numbers.length; i += names.length) {
    rows.push(Object.fromEntries(names.map((name, k) => [name, numbers[i + k]])));
  }
  return rows;
}

const regionsIn = ({ numbers }) =>
  rowsIn(numbers, REGION).map((row) => ({ ...row, touchesBorder: row.touchesBorder === 1 }));

export function operations(perform) {
  async function run(request) {
    const answer = await perform(request);
    if (answer.warning) console.warn(answer.warning);
    if (answer.status === 1) throw new RangeError(answer.message);
    if (answer.status !== 0) throw new Error(answer.message);
    return answer;
  }

  async function findObjects(image, options) {
    const checked = checkedOptions("find", options);
    const answer = await run({ do: "find", image: checkedImage(image), options: nativeOptions(checked) });
    return { objects: objectsIn(answer), settings: answer.json.settings, options: checked };
  }

  async function estimateSettings(image) {
    return (await run({ do: "estimate", image: checkedImage(image) })).json.settings;
  }

  async function segment(image, given) {
    const { objects, settings, measure, ...options } = optionsObject(given);
    const checked = checkedOptions("segment", options);
    const request = { do: "segment", image: checkedImage(image), options: nativeOptions(checked) };
    if (measure) request.measured = measuredLike(request.image, measure);
    if (objects) {
      request.objects = checkedObjects(objects);
      if (settings) request.options.polarity = checkedSettings(settings).polarity;
    }
    const answer = await run(request);
    const kept = objectsIn(answer);
    const { width, height } = image;
    return {
      labels: { data: answer.labels, width, height },
      regions: regionsIn(answer).map((region, i) => ({ ...region, score: kept[i].score })),
      objects: kept,
      settings: answer.json?.settings ?? settings,
      options: checked,
    };
  }

  async function measureLabels(labels, image) {
    const request = { do: "measureLabels", labels: checkedLabels(labels), image: checkedImage(image) };
    requireSameSize(request.image, labels, "labels");
    return regionsIn(await run(request));
  }

  async function measure(image, options) {
    const checked = checkedOptions("measure", options);
    const { json, numbers, labels } = await run({ do: "measure", image: checkedImage(image), options: checked });
    const { width, height } = image;
    return {
      threshold: json.threshold,
      regions: rowsIn(numbers, json.columns),
      labels: { data: labels, width, height },
      options: checked,
    };
  }

  async function vote(image, options) {
    const checked = checkedOptions("vote", options);
    const { json, numbers } = await run({ do: "vote", image: checkedImage(image), options: checked });
    return { centers: rowsIn(numbers, ["x", "y", "weight"]), settings: json.settings, options: checked };
  }

  async function encode(image, result, format, given) {
    const { measure, ...facts } = optionsObject(given);
    const kind = kindOf(result);
    const known = FORMATS[kind];
    if (!known.includes(format)) throw new RangeError(`format must be one of ${known.join(", ")}, not ${format}`);
    const request = {
      do: "encode",
      format,
      kind,
      image: checkedImage(image),
      options: nativeOptions(checkedOptions(kind, result.options)),
      facts: checkedOptions("encode", facts),
    };
    if (kind === "vote") Object.assign(request, checkedVote(result));
    else Object.assign(request, { objects: checkedObjects(result.objects), settings: checkedSettings(result.settings) });
    if (kind === "segment") {
      request.labels = checkedLabels(result.labels);
      requireSameSize(request.image, result.labels, "labels");
      if (measure) request.measured = measuredLike(request.image, measure);
    }
    return (await run(request)).bytes;
  }

  return { findObjects, estimateSettings, segment, measure, measureLabels, vote, encode };
}

const TABLES = ["csv", "json", "geojson", "geojson.gz", "roi", "napari"];
const FORMATS = {
  find: [...TABLES, "overlay"],
  segment: [...TABLES, "overlay", "labels"],
  vote: [...TABLES, "overlay"],
};

function requireSameSize(image, other, name) {
  if (image.width === other.width && image.height === other.height) return;
  throw new RangeError(
    `image has ${image.width} x ${image.height} pixels, ${name} has ${other.width} x ${other.height}`,
  );
}

function measuredLike(image, measure) {
  const measured = checkedImage(measure, "measure");
  requireSameSize(image, measured, "measure");
  return measured;
}
