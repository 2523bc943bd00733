// The functions that the WebAssembly module exports. The caller allocates the memory of what goes
// in, and reads what comes out before the next call.
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>

#include "web/native/operations.h"

namespace {

using orva::web::Answer;
using orva::web::Json;

// What a call leaves, as 32-bit numbers.
struct Outcome {
  int status;  // 0: done; 1: an argument is out of range; 2: another error. The text is its message
  const char* text;
  std::size_t textSize;
  const void* objects;
  std::size_t objectCount;
  const double* numbers;
  std::size_t numberCount;
  const int* labels;
  std::size_t labelCount;
  const char* bytes;
  std::size_t byteCount;
};

Answer answer;     // of the last call
std::string text;  // of the last call
Outcome outcome;

enum Status { kDone, kOutOfRange, kFailed };

void fail(Status status, const char* message) {
  outcome = {};
  outcome.status = status;
  text = message;
}

void performRequest(const char* request, std::size_t size) {
  answer = orva::web::perform(Json::parse(request, request + size));
  text = answer.json.dump();
  outcome = {kDone,
             nullptr,
             0,
             answer.objects.data(),
             answer.objects.size(),
             answer.numbers.data(),
             answer.numbers.size(),
             answer.labels.data(),
             answer.labels.size(),
             answer.bytes.data(),
             answer.bytes.size()};
}

}  // namespace

extern "C" {

[[clang::export_name("allocate")]] void* orvaAllocate(std::size_t size) {
  return std::malloc(size);
}

[[clang::export_name("release")]] void orvaRelease(void* block) { std::free(block); }

// Frees what the last call left.
[[clang::export_name("clear")]] void orvaClear() {
  answer = {};
  text = {};
  outcome = {};
}

[[clang::export_name("perform")]] const Outcome* orvaPerform(const char* request,
                                                             std::size_t size) {
  try {
    performRequest(request, size);
  } catch (const std::invalid_argument& error) {
    fail(kOutOfRange, error.what());
  } catch (const std::length_error& error) {
    fail(kOutOfRange, error.what());
  } catch (const std::bad_alloc&) {
    fail(kFailed, "out of memory");
  } catch (const std::exception& error) {
    fail(kFailed, error.what());
  }
  outcome.text = text.data();
  outcome.textSize = text.size();
  return &outcome;
}

}  // extern "C"
