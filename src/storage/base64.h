#pragma once

#include <string>
#include <string_view>

namespace tavira {

/**
 * Decodes base64 text in the standard alphabet. Bytes outside the alphabet ("=", line breaks) are passed
 * over; each four characters give three bytes; two or three left over at the end give one or two, a single
 * one gives none. Linear on any input. Throws std::bad_alloc.
 */
std::string DecodeBase64(std::string_view text);

}  // namespace tavira
