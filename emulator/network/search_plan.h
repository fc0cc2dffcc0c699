#pragma once

#include <cstdint>
#include <string>

namespace lxemu {

/// What a printer sends in the course of a network search. The values are bits, so that a fault can name
/// several of them.
enum class SearchMessage : std::uint8_t {
  kAnnouncement = 1,  ///< the answer to the broadcast
  kState = 2,         ///< the answer to command 0
  kNames = 4,         ///< the answer to command 0x02000000
};

/// A set of search messages.
struct tagSearchMessages {
  std::uint8_t bits = 0;

  bool Has(SearchMessage message) const { return (bits & static_cast<std::uint8_t>(message)) != 0; }
  void Add(SearchMessage message) {
    bits = static_cast<std::uint8_t>(bits | static_cast<std::uint8_t>(message));
  }
};

/// A time for each search message, in milliseconds.
struct tagSearchTimes {
  std::uint32_t announcement_ms = 0;
  std::uint32_t state_ms = 0;
  std::uint32_t names_ms = 0;

  std::uint32_t Of(SearchMessage message) const {
    return message == SearchMessage::kAnnouncement ? announcement_ms
           : message == SearchMessage::kState      ? state_ms
                                                   : names_ms;
  }
};

/// How a printer takes part in a network search: the names that it reports, and what goes wrong.
struct tagSearchPlan {
  std::string first_name;          ///< empty: the model
  std::string second_name;         ///< empty: the name of the command line
  tagSearchMessages silent;        ///< not sent
  tagSearchMessages wrong_letter;  ///< sent with another letter behind the maker word
  tagSearchMessages rejected;      ///< sent with a status that no host takes
  tagSearchMessages cut_short;     ///< sent without the end
  tagSearchMessages twice;         ///< sent twice
  tagSearchMessages other_port;    ///< sent from another port than the one that was asked
  bool no_capability = false;      ///< the announcement's capability bit is clear
  std::uint32_t delay_ms = 0;      ///< from the question to each answer
  tagSearchTimes late;             ///< from the question to these answers, on top of delay_ms
  tagSearchTimes again;            ///< sent once more so long after the answer; 0: not
};

}  // namespace lxemu
