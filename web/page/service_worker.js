// Keeps all files of the page, so that it works without a network. FILES and CACHE_NAME come from the build.
/* global FILES, CACHE_NAME */

self.addEventListener("install", (event) => {
  const keep = async () => {
    const cache = await caches.open(CACHE_NAME);
    await cache.addAll(FILES.map((file) => new Request(file, { cache: "reload" })));
    await self.skipWaiting();
  };
  event.waitUntil(keep());
});

self.addEventListener("activate", (event) => {
  const replace = async () => {
    for (const name of await caches.keys()) {
      if (name.startsWith("orva-") && name !== CACHE_NAME) await caches.delete(name);
    }
    await self.clients.claim();
  };
  event.waitUntil(replace());
});

// The kept file, or the network for what is not kept.
self.addEventListener("fetch", (event) => {
  const answer = async () => {
    const cache = await caches.open(CACHE_NAME);
    return (await cache.match(event.request, { ignoreSearch: true })) ?? fetch(event.request);
  };
  event.respondWith(answer());
});
