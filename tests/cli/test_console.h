#pragma once

#include <string>

/**
 * A console without a window that this process takes part in, and so do the programs that it starts: for what tools do
 * when a person sits in front of them. One at a time.
 */
class CTestConsole {
 public:
  /** Throws std::runtime_error when the system makes none. */
  CTestConsole();
  ~CTestConsole();
  CTestConsole(const CTestConsole&) = delete;
  CTestConsole& operator=(const CTestConsole&) = delete;

  /** The ends that a program takes in place of pipes; inherited by programs that are started. */
  void* Input() const { return input_; }
  void* Output() const { return output_; }

  /** Keys for whoever reads next; ASCII, "\n" is Enter. */
  void Type(const std::string& keys) const;

  /** Empties the screen. */
  void Clear() const;

  /** True when green stands on the screen: as a colour, or (Wine) as the characters that ask for it. */
  bool ShowsColour() const;

  /** Reaches every process of the console; this one takes no notice. */
  static void PressCtrlC();

 private:
  void* input_ = nullptr;
  void* output_ = nullptr;
};
