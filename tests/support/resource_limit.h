// Less room than usual: for files, as on a full disk, or for memory.
#ifndef ORVA_TESTS_SUPPORT_RESOURCE_LIMIT_H
#define ORVA_TESTS_SUPPORT_RESOURCE_LIMIT_H

#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace orva::test {

// To the end of its scope this process, and for ever a child that it starts, can have no more than
// `most` of a resource such as RLIMIT_FSIZE, the bytes of a file. Nothing for a negative `most`.
// Writing more is an error and no signal.
class ResourceLimit {
 public:
  ResourceLimit(__rlimit_resource_t resource, long most) : resource_(resource), isSet_(most >= 0) {
    if (!isSet_) return;
    if (::getrlimit(resource_, &before_) != 0) {
      throw std::system_error(errno, std::generic_category(), "getrlimit");
    }
    action_ = std::signal(SIGXFSZ, SIG_IGN);
    set(static_cast<rlim_t>(most));
  }
  ResourceLimit(const ResourceLimit&) = delete;
  ResourceLimit& operator=(const ResourceLimit&) = delete;
  ~ResourceLimit() {
    if (!isSet_) return;
    set(before_.rlim_cur);
    std::signal(SIGXFSZ, action_);
  }

 private:
  void set(rlim_t most) const {
    const rlimit limit{most, before_.rlim_max};
    ::setrlimit(resource_, &limit);
  }

  __rlimit_resource_t resource_;
  bool isSet_;
  rlimit before_{};
  void (*action_)(int) = SIG_DFL;
};

}  // namespace orva::test

#endif
