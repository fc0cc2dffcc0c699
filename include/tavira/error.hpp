/* The errors of the C++ layer; see manager.hpp. */
#ifndef TAVIRA_ERROR_HPP_
#define TAVIRA_ERROR_HPP_

#include <tavira/TaviraManager.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

namespace tavira {

/** What a result code means. A code of the port library has one text for all. */
inline const char* ResultWords(std::int32_t code) noexcept {
  switch (code) {
    case TVMGR_OK:
      return "done";
    case TVMGR_FILE_TOO_LARGE:
      return "the backup file has grown past 1 GiB; it was closed properly before that";
    case TVMGR_PORT_NOT_READY:
      return "Ferrolink.dll is missing or incomplete, or the search could not start its worker";
    case TVMGR_NOT_INITIALIZED:
      return "there is no manager, or it has no port library";
    case TVMGR_OUT_OF_MEMORY:
      return "memory ran out";
    case TVMGR_PORT_LIBRARY_MISSING:
      return "Ferrolink.dll is missing or incomplete";
    case TVMGR_BAD_ARGUMENT:
      return "a bad argument, nothing to send, or an operation that does not exist";
    case TVMGR_SEARCH_FAILED:
      return "the network search could not open its socket or send its broadcast";
    case TVMGR_PAYLOAD_UNREADABLE:
      return "the stored file came back in a form that cannot be decoded";
    case TVMGR_FILE_ERROR:
      return "the file on this computer cannot be created, opened or written";
    case TVMGR_FILE_READ_ERROR:
      return "the file on this computer cannot be read whole";
    case TVMGR_NOT_CONFIRMED:
      return "the printer took the command but still shows another state";
    case TVMGR_CHECK_PORT_UNSUPPORTED:
      return "port checks are not supported";
    default:
      return "a code of Ferrolink.dll, passed through";
  }
}

/** A function of the module that did not answer TVMGR_OK, or that was not called because its arguments are wrong. */
class Error : public std::runtime_error {
 public:
  Error(const char* function, std::int32_t code) : Error(function, code, ResultWords(code)) {}
  /** `function` and `words` are string literals. */
  Error(const char* function, std::int32_t code, const char* words)
      : std::runtime_error(std::string(function) + ": " + std::to_string(code) + ", " + words),
        function_(function),
        words_(words),
        code_(code) {}

  /** A value of TvmgrResult, or Ferrolink.dll's own code. */
  std::int32_t Code() const noexcept { return code_; }
  const char* Words() const noexcept { return words_; }
  const char* Function() const noexcept { return function_; }

 private:
  const char* function_;
  const char* words_;
  std::int32_t code_;
};

namespace detail {

inline void Check(const char* function, std::int32_t result) {
  if (result != TVMGR_OK) {
    throw Error(function, result);
  }
}

template <typename Length>
Length CheckedLength(const char* function, std::size_t size) {
  if (size > static_cast<std::size_t>((std::numeric_limits<Length>::max)())) {
    throw Error(function, TVMGR_BAD_ARGUMENT, "a negative number, or one that is too large");
  }
  return static_cast<Length>(size);
}

}  // namespace detail
}  // namespace tavira

#endif /* TAVIRA_ERROR_HPP_ */
