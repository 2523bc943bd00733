// Files of drawn discs, for the tests of what is printed and in which format.
#ifndef ORVA_TESTS_APPS_DISC_FILES_H
#define ORVA_TESTS_APPS_DISC_FILES_H

#include <gtest/gtest.h>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {

// A folder with discs.pgm, three discs, and times.tif, one disc at each of two times.
struct DiscFiles : ::testing::Test {
  DiscFiles() {
    box.write("discs.pgm", pgm(discs(150, 110, {{20, 22, 9}, {61, 18, 9}, {88, 51, 9}})));
    TiffFile file(box / "times.tif");
    TiffForm form;
    form.description = "ImageJ=1.53t\nimages=2\nframes=2\n";
    file.page(discs(100, 90, {{30, 30, 9}}), form);
    form.description.clear();
    file.page(discs(100, 90, {{60, 50, 9}}), form);
  }

  Sandbox box;
};

}  // namespace orva::test

#endif
