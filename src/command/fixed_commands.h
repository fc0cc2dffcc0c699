#pragma once

#include <string_view>

namespace tavira {

/** Stand for "^", "~" and "," whatever prefix characters are in force. */
inline constexpr char kAlternativeFormat = '\x1E';
inline constexpr char kAlternativeControl = '\x10';
inline constexpr char kAlternativeDelimiter = '\x1F';

inline constexpr std::string_view kOpenFormat = "^XA";
inline constexpr std::string_view kCloseFormat = "^XZ";

/** Makes the printer keep its settings. */
inline constexpr std::string_view kSaveCommand = "^XA^JUS^XZ";
inline constexpr std::string_view kAlternativeSaveCommand = "\x1EXA\x1EJUS\x1EXZ";

/** Ends every stream of commands that changes something. */
inline constexpr std::string_view kClosingCommand = "^XA^H(E^XZ";
inline constexpr std::string_view kAlternativeClosingCommand = "\x1EXA\x1EH(E\x1EXZ";

/** Asks for the control prefix in characters that hold under any prefix. */
inline constexpr std::string_view kPrefixQuery = "\x10H(CCC\x1FT";

/** The printer's state, which is no setting. */
inline constexpr std::string_view kStatusQuery = "~H(SMA,S";
inline constexpr std::string_view kStatusAnswerHead = "^S(SMA,S";

static_assert(kAlternativeSaveCommand.size() == 10 && kAlternativeClosingCommand.size() == 10 &&
              kPrefixQuery.size() == 8);

}  // namespace tavira
