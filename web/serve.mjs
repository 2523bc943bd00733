// Serves the page on this machine only: node serve.mjs FOLDER [PORT]
import { createReadStream } from "node:fs";
import { readFile, stat } from "node:fs/promises";
import { createServer } from "node:http";
import { extname, join, normalize, resolve } from "node:path";
import { pathToFileURL } from "node:url";
import { createGzip } from "node:zlib";

const TYPES = {
  ".css": "text/css",
  ".html": "text/html; charset=utf-8",
  ".js": "text/javascript",
  ".png": "image/png",
  ".svg": "image/svg+xml",
  ".wasm": "application/wasm",
  ".webmanifest": "application/manifest+json",
};

// The policy that the page states, which a header states for its workers, too.
async function policyOf(folder) {
  const html = await readFile(join(folder, "index.html"), "utf-8");
  return /http-equiv="Content-Security-Policy"\s+content="([^"]*)"/.exec(html)[1];
}

// Listens on the loopback interface; port 0 is any free one. Returns {server, address}.
export async function serve(folder, port = 0) {
  const root = resolve(folder);
  const policy = await policyOf(root);
  const server = createServer(async (request, response) => {
    const { pathname } = new URL(request.url, "http://localhost");
    const path = normalize(join(root, decodeURIComponent(pathname), pathname.endsWith("/") ? "index.html" : ""));
    const isInside = path.startsWith(root);
    const isFile = isInside && (await stat(path).then((s) => s.isFile(), () => false));
    if (!isFile || !["GET", "HEAD"].includes(request.method)) {
      response.writeHead(isFile ? 405 : 404).end();
      return;
    }
    const isCompressed = extname(path) !== ".png" && /\bgzip\b/.test(request.headers["accept-encoding"] ?? "");
    response.writeHead(200, {
      "Content-Type": TYPES[extname(path)] ?? "application/octet-stream",
      "Content-Security-Policy": `${policy}; frame-ancestors 'none'`,
      "Cache-Control": "no-cache",
      "Referrer-Policy": "no-referrer",
      "X-Content-Type-Options": "nosniff",
      Vary: "Accept-Encoding",
      ...(isCompressed && { "Content-Encoding": "gzip" }),
    });
    if (request.method === "HEAD") response.end();
    else if (isCompressed) createReadStream(path).pipe(createGzip({ level: 9 })).pipe(response);
    else createReadStream(path).pipe(response);
  });
  await new Promise((done, failed) => server.once("error", failed).listen(port, "127.0.0.1", done));
  return { server, address: `http://127.0.0.1:${server.address().port}/` };
}

if (import.meta.url === pathToFileURL(process.argv[1] ?? "").href) {
  const { address } = await serve(process.argv[2], Number(process.argv[3] ?? 8000));
  console.log(`${address} (end with Ctrl-C)`);
}
