#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace tvmgr {

/**
 * An option or argument of a command, and what it takes. Each function returns the same option. This and CParser stand in
 * front of the library that parses, whose headers take longer to compile than all the rest of a file.
 */
class COption {
 public:
  explicit COption(CLI::Option* option) : option_(option) {}
  COption Required() const;
  COption OneOf(std::vector<std::string> words) const;
  COption Range(double least, double most) const; /**< both included */
  COption Range(std::uint32_t least, std::uint32_t most) const;
  COption ShowsDefault() const;             /**< in the help: what the variable holds now */
  COption TypeName(const char* name) const; /**< in the help, for what comes behind it */
  COption Words(int count) const;           /**< exactly so many */
  COption AnyWords() const;                 /**< none, or as many as come */
  COption Excludes(COption other) const;
  bool IsGiven() const; /**< once the arguments are parsed */

 private:
  CLI::Option* option_;
};

/** A command's arguments as they are declared; the copies of one mean the same command, which the program owns. */
class CParser {
 public:
  explicit CParser(CLI::App& app) : app_(&app) {}
  CParser AddCommand(const char* name, const char* help) const;
  /** `name`: "--option", "-o,--option" or the name of an argument. The variable has to outlive the parsing. */
  COption Add(const char* name, std::string& value, const char* help) const;
  COption Add(const char* name, std::optional<std::string>& value, const char* help) const;
  COption Add(const char* name, std::vector<std::string>& value, const char* help) const;
  COption Add(const char* name, double& value, const char* help) const;
  COption Add(const char* name, std::optional<double>& value, const char* help) const;
  COption Add(const char* name, std::uint32_t& value, const char* help) const;
  COption Add(const char* name, std::optional<std::uint32_t>& value, const char* help) const;
  COption Add(const char* name, std::optional<std::int32_t>& value, const char* help) const;
  COption AddFlag(const char* name, bool& value, const char* help) const;
  void Footer(std::string text) const; /**< of the help; lines of running text are joined */
  CLI::App& App() const { return *app_; }

 private:
  CLI::App* app_;
};

}  // namespace tvmgr
