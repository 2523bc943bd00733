// The library starts no threads and no processes: its operations run where the system calls that
// would are forbidden.
#include <gtest/gtest.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

#include "orva/bip/bip.h"
#include "orva/image_io/image_io.h"
#include "orva/image_math/image_math.h"
#include "orva/scalespace/scalespace.h"
#include "orva/voting/circularvoting.h"
#include "tests/support/files.h"
#include "tests/support/images.h"
#include "tests/support/printed.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

// From here on this process dies of SIGSYS when it starts a thread or a process.
bool forbidThreads() {
  sock_filter rules[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_clone, 1, 0),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_clone3, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  sock_fprog program{static_cast<unsigned short>(std::size(rules)), rules};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

std::ptrdiff_t threads() {
  const std::filesystem::directory_iterator all("/proc/self/task");
  return std::distance(begin(all), end(all));
}

constexpr int kDone = 0;
constexpr int kNotForbidden = 7;
constexpr int kMoreThreads = 8;

// How work() ends in a process that may have no other threads: its status, or 128 and a signal.
template <class Work>
int endingAlone(const Work& work) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    if (!forbidThreads()) std::_Exit(kNotForbidden);
    const std::ptrdiff_t before = threads();
    printedBy(work);
    std::_Exit(threads() == before ? kDone : kMoreThreads);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Large enough that sharing the work out would pay.
const Shape kShape{1024, 768};

TEST(StartsNoThreads, IsSeenIfOneIsStarted) {
  EXPECT_EQ(endingAlone([] { std::thread([] {}).join(); }), 128 + SIGSYS);
  EXPECT_EQ(endingAlone([] {}), kDone);
}

TEST(StartsNoThreads, ForFilters) {
  Random random(81);
  const auto img = randomImage<unsigned char>(random, kShape);
  EXPECT_EQ(endingAlone([&] {
              const image<float> dx = scalespace::dX(img, 2.0F);
              scalespace::smooth(img, 2.0F, 1.0F);
              scalespace::gradient(img, 1.0F, 1.0F);
              scalespace::direction(dx, dx);
              scalespace::features(img, 1.0F, HESSIAN_MAXIMUM, 1.0F);
              scalespace::harmonicCut(img, 1.0F, true, 1);
              std::unique_ptr<Image>(scalespace::reduce(img, 0.5F, 1.0F));
            }),
            kDone);
}

TEST(StartsNoThreads, ForMasksAndLabels) {
  Random random(82);
  image<unsigned char> mask = randomMask(random, kShape, 0.5);
  const auto brightness = randomImage<float>(random, kShape);
  EXPECT_EQ(endingAlone([&] {
              image<short> labels = bip::regions(mask);
              bip::regionFeatures(labels, brightness);
              bip::regionIntensityArrays(labels, brightness, true);
              bip::fchamfer(mask);
              bip::chamfer(labels, true);
              bip::boundaries(labels);
              bip::erode(labels);
              bip::propagate(labels, 9.0F);
              bip::convexHull(labels, 3);
              bip::computeThreshold(brightness, 1.0F);
              bip::selectRegions(mask, brightness, 0.5F, 2);
              bip::removeInternalStructures(mask);
              bip::dilate(mask);
            }),
            kDone);
}

TEST(StartsNoThreads, ForImagesAndFiles) {
  Random random(83);
  const auto img = randomImage<float>(random, kShape);
  const TempDir dir;
  EXPECT_EQ(endingAlone([&] {
              toByteImage(img, true);
              toRgbImage(img);
              image_io::convertToShortImage(img);
              std::unique_ptr<Image>(img.scale(2000, 2000, 1));
              img.max();
              image_math::meanOfTopByPercentage(img, 0.5F);
              image_math::findZeros(img);
              image_io::writeICS(dir.file("b"), img);
              image_io::writeIHT(dir.file("b.iht"), img);
              std::unique_ptr<Image>(image_io::readIHT(dir.file("b.iht")));
            }),
            kDone);
}

TEST(StartsNoThreads, ForVoting) {
  const auto img = discImage<unsigned char>({400, 300}, {{50, 60, 12}, {200, 170, 15}}, 190, 25);
  EXPECT_EQ(endingAlone([&] {
              VotingParams params;
              params.regionType = 2;
              params.useEdges = true;
              Probe probe(params);
              probe.compute(img);
              if (probe.centers().empty()) std::_Exit(9);
            }),
            kDone);
}

}  // namespace
}  // namespace orva::test
