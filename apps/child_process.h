// Work that may end the process it runs in.
#ifndef ORVA_APPS_CHILD_PROCESS_H
#define ORVA_APPS_CHILD_PROCESS_H

#include <functional>
#include <string>

namespace orva::apps {

// Calls work() in a copy of this process and returns its text of up to a mebibyte. Throws FileError
// with the words of what work() threw, or when the copy has ended without a text: the library ends
// the process on a lack of memory, and the system ends one that takes too much. Where no copy can
// be made, work() runs here.
std::string inChildProcess(const std::function<std::string()>& work);

}  // namespace orva::apps

#endif
