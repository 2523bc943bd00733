// Limits the size of files, as a full disk does, or of memory.
#ifndef ORVA_TESTS_SUPPORT_RESOURCE_LIMIT_H
#define ORVA_TESTS_SUPPORT_RESOURCE_LIMIT_H

#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace orva::test {

// Limits a resource of this process, such as RLIMIT_FSIZE (bytes of a file), to `max` until the end
// of the scope; children keep the limit. A negative `max` sets no limit. Exceeding RLIMIT_FSIZE is
// an error of the write, not a signal.
class ResourceLimit {
 public:
  ResourceLimit(__rlimit_resource_t resource, long max) : resource_(resource), isSet_(max >= 0) {
    if (!isSet_) return;
    if (::getrlimit(resource_, &before_) != 0) {
      throw std::system_error(errno, std::generic_category(), "getrlimit");
    }
    action_ = std::signal(SIGXFSZ, SIG_IGN);
    set(static_cast<rlim_t>(max));
  }
  ResourceLimit(const ResourceLimit&) = delete;
  ResourceLimit& operator=(const ResourceLimit&) = delete;
  ~ResourceLimit() {
    if (!isSet_) return;
    set(before_.rlim_cur);
    std::signal(SIGXFSZ, action_);
  }

 private:
  void set(rlim_t max) const {
    const rlimit limit{max, before_.rlim_max};
    ::setrlimit(resource_, &limit);
  }

  __rlimit_resource_t resource_;
  bool isSet_;
  rlimit before_{};
  void (*action_)(int) = SIG_DFL;
};

}  // namespace orva::test

#endif
