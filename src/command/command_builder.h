#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavira {

/**
 * Appends a setting's query head alone: no opener, no separator, so that queries stand back to back. Nothing
 * for a setting without a query.
 */
void AppendQuery(std::string& commands, std::uint32_t id);

/** Appends the query of every setting that has one, in table order. */
void AppendAllQueries(std::string& commands);

/**
 * Appends "^XA", the set head, a "," where the setting has one, the value unchanged, "^XZ". Nothing for no
 * setting.
 */
void AppendSetCommand(std::string& commands, std::uint32_t id, std::string_view value);

/** The three characters that introduce commands and separate parameters. */
struct tagPrefixCharacters {
  std::uint8_t control = '~';
  std::uint8_t format = '^';
  std::uint8_t delimiter = ',';
};

/** Appends the block between STX and ETX that changes the prefix characters, sent as they are. */
void AppendPrefixChange(std::string& commands, const tagPrefixCharacters& prefix);

}  // namespace tavira
