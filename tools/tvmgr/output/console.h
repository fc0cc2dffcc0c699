#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace tvmgr {

enum class EStream { kInput, kOutput, kError };

/** True when the stream is a console, false for files, pipes and the null device. */
bool IsTerminal(EStream stream);

/**
 * Columns of the terminal that stdout goes to, at least 40; none when it goes elsewhere. The environment variable
 * COLUMNS, where it is a number, goes before both.
 */
std::optional<std::size_t> OutputColumns();

/** From now on nothing is coloured, whatever stdout is. */
void ForbidColour();

/**
 * True when stdout is a terminal that shows colours and nobody has said no to them (ForbidColour; the environment
 * variable NO_COLOR with any text in it).
 */
bool IsOutputColoured();

/**
 * Puts the three streams in order for the life of the program: UTF-8 and, where the console can, colours;
 * bytes unchanged everywhere. Gives the console its code page and its mode back at the end.
 */
class CConsoleSetup {
 public:
  CConsoleSetup();
  ~CConsoleSetup();
  CConsoleSetup(const CConsoleSetup&) = delete;
  CConsoleSetup& operator=(const CConsoleSetup&) = delete;

 private:
  unsigned int earlier_code_page_ = 0;
  std::optional<unsigned long> earlier_mode_; /**< of the console of stdout, where it was changed */
};

/**
 * While one exists, the first Ctrl-C or Ctrl-Break does not end the process, so that a call of the module can
 * end in order; it is announced on stderr when a call runs. A second one ends the process at once. One at a
 * time.
 */
class CInterruptWait {
 public:
  CInterruptWait();
  ~CInterruptWait();
  CInterruptWait(const CInterruptWait&) = delete;
  CInterruptWait& operator=(const CInterruptWait&) = delete;

  /** Waits; true as soon as Ctrl-C or Ctrl-Break was pressed since the construction. */
  bool WaitFor(std::uint32_t ms) const;

  /** True when Ctrl-C or Ctrl-Break was pressed since the construction. */
  bool WasPressed() const { return WaitFor(0); }

  /** Says what runs, for the announcement; empty: nothing. */
  static void SetRunning(const std::string& what);
};

/**
 * Has the user confirm something that cannot be undone by typing "yes". Ends the command when the answer is
 * another, or (usage) when there is nobody to ask and agreed is not set.
 *
 * @param what  completes "This will ..."
 */
void Confirm(const std::string& what, bool agreed);

/** Writes text to stderr in one piece, so that nothing of another thread or process comes in between. */
void WriteError(const std::string& text);

/** The local time, "2031-05-04 13:14:15.167". */
std::string TimeStamp();

}  // namespace tvmgr
