#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "doctor/finding.h"

namespace tvmgr {

// From what was seen to what is said of it. Pure.

/** Names of the steps that talk to the printer, in their order. */
inline constexpr char kStepAnswer[] = "answer";
inline constexpr char kStepPrefix[] = "prefix characters";
inline constexpr char kStepState[] = "state";
inline constexpr char kStepRoundTrip[] = "round trip";

/** A DLL as it was found. */
struct tagLibraryState {
  std::string path;
  bool exists = false;
  std::string problem; /**< in words; empty: none */
  std::string version; /**< "1.0.0.0"; may be empty */
  bool is_download = false;
};

/** @param tool_version  "1.0.0"; that of the DLL has to begin so */
tagFinding JudgeModule(const tagLibraryState& library, const std::string& tool_version);

/** @param load_problem  why the module cannot use it; empty: it does, or was not asked */
tagFinding JudgePortLibrary(const tagLibraryState& library, const std::string& load_problem);

/** One question for the printer's state. */
struct tagAnswer {
  std::int32_t result = 0;
  std::string meaning;      /**< of the result, in words, where it is not 0 */
  std::string advice;       /**< likewise */
  std::uint32_t status = 0; /**< enum TvmgrStatus */
  std::uint64_t took_ms = 0;
};

tagFinding JudgeAnswer(const tagAnswer& answer);

/**
 * @param is_default  as the module says; silence and an answer that is cut off read so, too
 * @param state       what came to the question before, for the state
 */
tagFinding JudgePrefix(const tagAnswer& question, bool is_default, const tagAnswer& state);

/** @param words  of the status, "busy (printing, ...)" */
tagFinding JudgeState(std::uint32_t status, const std::string& words);

/** Several questions in a row. */
tagFinding JudgeRoundTrips(const std::vector<tagAnswer>& answers);

/** What a full load brought. */
struct tagLoad {
  std::int32_t result = 0;
  std::string meaning;
  std::size_t answered = 0;
  std::size_t readable = 0;
  bool is_neutral = true; /**< the resolutions are 600: nothing was saved */
  std::uint64_t took_ms = 0;
};

tagFinding JudgeLoad(const tagLoad& load);

/** What is known of the printer's port. */
struct tagPortState {
  std::string port;       /**< the one that was chosen, or that leads to the printer; empty: none is known */
  bool is_listed = false; /**< the spooler has such a port */
  std::string spooler_problem; /**< why the spooler says nothing; empty: it does */
  bool is_asked = false;       /**< the module was, for what it knows of the printer */
  std::string known; /**< what the module knows behind it: an address or a device path; may be empty */
  std::vector<std::string> printers; /**< installed on it, "Shipping (paused, 3 jobs wait)" */
  bool has_trouble = false;          /**< one of them is paused or off-line, or jobs wait */
  bool is_chosen = false;            /**< by its name; else an address, a device or nothing was */
};

tagFinding JudgePort(const tagPortState& port);

/** The network, as this computer has it. */
struct tagNetworkState {
  bool is_known = false;
  bool is_late = false; /**< nothing is known, since Windows was still being asked when the time was over */
  std::vector<std::string> adapters; /**< "Ethernet (192.0.2.7/24)" */
  std::string broadcast;             /**< the adapter by which a search leaves; empty: none */
  std::string address;               /**< of the printer; empty: it is not chosen by one */
  bool is_other_address = false;     /**< it is of IPv6, of which nothing is looked at */
  std::vector<std::string> resolved; /**< what the address means */
  bool is_resolved_late =
      false;       /**< the name, or the way there, was still being looked up when the time was over */
  std::string way; /**< the adapter towards it; empty: none */
  bool has_firewall = false;
  std::vector<std::string> profiles; /**< in which the firewall is on */
  std::vector<std::string> blocking; /**< rules in force that are to keep datagrams from this program */
};

tagFinding JudgeNetwork(const tagNetworkState& network);

/** "a", "a and b", "a, b and c". */
std::string Listed(const std::vector<std::string>& words);

}  // namespace tvmgr
