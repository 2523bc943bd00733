#include "orva/scalespace/scalespace.h"
#include "tests/support/reference/scalespace.h"

namespace orva::reference {

namespace {

// The derivatives of the smoothed image at one voxel by central differences, and the tests on them.
// On a single plane the terms along z are 0.
struct Differences {
  float xx, yy, zz = 0;
  float xy, xz = 0, yz = 0;
  float x, y, z = 0;

  Differences(const image<float>& l, int px, int py, int pz) {
    const auto at = [&](int dx, int dy, int dz) {
      return l.pixels()[px + dx + (py + dy) * l.nx() + (pz + dz) * l.nx() * l.ny()];
    };
    xx = at(1, 0, 0) + at(-1, 0, 0) - 2.0F * at(0, 0, 0);
    yy = at(0, 1, 0) + at(0, -1, 0) - 2.0F * at(0, 0, 0);
    xy = (at(1, 1, 0) + at(-1, -1, 0) - at(1, -1, 0) - at(-1, 1, 0)) * 0.25F;
    x = (at(1, 0, 0) - at(-1, 0, 0)) * 0.5F;
    y = (at(0, 1, 0) - at(0, -1, 0)) * 0.5F;
    if (l.nframes() < 2) return;
    zz = at(0, 0, 1) + at(0, 0, -1) - 2.0F * at(0, 0, 0);
    xz = (at(1, 0, 1) + at(-1, 0, -1) - at(1, 0, -1) - at(-1, 0, 1)) * 0.25F;
    yz = (at(0, 1, 1) + at(0, -1, -1) - at(0, 1, -1) - at(0, -1, 1)) * 0.25F;
    z = (at(0, 0, 1) - at(0, 0, -1)) * 0.5F;
  }
};

bool holdsInPlane(int type, const Differences& l) {
  const bool sameSign = l.xx * l.yy > l.xy * l.xy;
  const float along = l.xx * (l.x * l.x) + l.yy * (l.y * l.y) + 2.0F * l.xy * l.x * l.y;
  switch (type) {
    case 4:
      return sameSign && l.xx < 0;
    case 8:
      return sameSign && l.xx > 0;
    case 16:
      return along < 0;
    case 32:
      return along > 0;
    default:
      return false;
  }
}

// Definiteness by Sylvester's criterion: the leading minors all positive, or alternating from
// negative.
bool holdsInStack(int type, const Differences& l) {
  const float minor = l.xx * l.yy - l.xy * l.xy;
  const float determinant = l.xx * (l.yy * l.zz - l.yz * l.yz) -
                            l.xy * (l.xy * l.zz - l.yz * l.xz) + l.xz * (l.xy * l.yz - l.yy * l.xz);
  const float along = l.xx * (l.x * l.x) + l.yy * (l.y * l.y) + l.zz * (l.z * l.z) +
                      2.0F * l.xy * l.x * l.y + 2.0F * l.xz * l.x * l.z + 2.0F * l.yz * l.y * l.z;
  switch (type) {
    case 4:
      return l.xx < 0 && minor > 0 && determinant < 0;
    case 8:
      return l.xx > 0 && minor > 0 && determinant > 0;
    case 16:
      return along < 0;
    case 32:
      return along > 0;
    default:
      return false;
  }
}

image<unsigned char> laplacianSign(const Image& img, Triple sigma, bool negative) {
  const bool stack = img.nframes() > 1;
  const image<float> gxx = gaussian(img, sigma, {2, 0, 0});
  const image<float> gyy = gaussian(img, sigma, {0, 2, 0});
  const image<float> gzz = stack ? gaussian(img, sigma, {0, 0, 2}) : image<float>(0, 1, 1, 1, 1);
  image<unsigned char> mask(img.nx(), img.ny(), img.nframes(), 1, 1);
  for (int i = 0; i < img.npix(); ++i) {
    float s = gxx.pixels()[i] + gyy.pixels()[i];
    if (stack) s += gzz.pixels()[i];
    if (negative ? s < 0 : s > 0) mask.pixels()[i] = 255;
  }
  return mask;
}

}  // namespace

image<unsigned char> features(const Image& img, float sigma, int type, float ratio) {
  if (img.isNull()) return image<unsigned char>(0, 1, 1, 1, 1);
  const int frames = img.nframes();
  const bool stack = frames > 1;
  const float sz = !stack ? sigma : sigma / (ratio == 0.0F ? 1.0F : ratio);
  const Triple scale{sigma, sigma, sz};
  if (type == 1 || type == 2) return laplacianSign(img, scale, type == 1);
  const image<float> l = smooth(img, scale);
  image<unsigned char> mask(img.nx(), img.ny(), frames, 1, 1);
  const int firstPlane = stack ? 1 : 0;
  for (int z = firstPlane; z < frames - firstPlane; ++z) {
    for (int y = 1; y <= img.ny() - 2; ++y) {
      for (int x = 1; x <= img.nx() - 2; ++x) {
        const Differences d(l, x, y, z);
        if (stack ? holdsInStack(type, d) : holdsInPlane(type, d)) mask.setPixel(x, y, z, 255);
      }
    }
  }
  return mask;
}

}  // namespace orva::reference
