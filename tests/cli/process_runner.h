#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/** What became of a process. The texts are its bytes, unchanged. */
struct tagRun {
  std::uint32_t exit_code = 0;
  std::string out;
  std::string err;
};

/** Ends of a console in place of pipes, for stdin and stdout; null: a pipe. */
struct tagConsoleEnds {
  void* input = nullptr;
  void* output = nullptr;
};

/**
 * Starts a program in its own folder with pipes for its three streams, waits for its end (at most 60 s, then
 * it is ended) and collects its output, but for what goes to a console. May be called from several threads.
 *
 * @param arguments  UTF-8
 * @param input      bytes for its stdin, which ends after them; less than a pipe holds (4 KiB)
 */
tagRun RunProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const std::string& input = {}, const tagConsoleEnds& console = {});
