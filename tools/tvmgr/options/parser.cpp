#include "options/parser.h"

#include <CLI/CLI.hpp>
#include <cmath>

namespace tvmgr {

COption COption::Required() const {
  return COption(option_->required());
}

COption COption::OneOf(std::vector<std::string> words) const {
  return COption(option_->check(CLI::IsMember(std::move(words))));
}

COption COption::Range(double least, double most) const {
  // Of what is no number both comparisons are false.
  return COption(option_->check(CLI::Range(least, most))->check([](const std::string& text) {
    double number = 0;
    return CLI::detail::lexical_cast(text, number) && std::isnan(number) ? text + " is no number"
                                                                         : std::string();
  }));
}

COption COption::Range(std::uint32_t least, std::uint32_t most) const {
  return COption(option_->check(CLI::Range(least, most)));
}

COption COption::ShowsDefault() const {
  return COption(option_->capture_default_str());
}

COption COption::TypeName(const char* name) const {
  return COption(option_->type_name(name));
}

COption COption::Words(int count) const {
  return COption(option_->expected(count));
}

COption COption::AnyWords() const {
  return COption(option_->expected(0, CLI::detail::expected_max_vector_size));
}

COption COption::Excludes(COption other) const {
  return COption(option_->excludes(other.option_));
}

bool COption::IsGiven() const {
  return option_->count() > 0;
}

CParser CParser::AddCommand(const char* name, const char* help) const {
  return CParser(*app_->add_subcommand(name, help));
}

COption CParser::Add(const char* name, std::string& value, const char* help) const {
  return COption(app_->add_option(name, value, help));
}

COption CParser::Add(const char* name, std::optional<std::string>& value, const char* help) const {
  return COption(app_->add_option(name, value, help));
}

COption CParser::Add(const char* name, std::vector<std::string>& value, const char* help) const {
  return COption(app_->add_option(name, value, help));
}

COption CParser::Add(const char* name, double& value, const char* help) const {
  return COption(app_->add_option(name, value, help));
}

COption CParser::Add(const char* name, std::optional<double>& value, const char* help) const {
  return COption(app_->add_option(name, value, help));
}

COption CParser::Add(const char* name, std::uint32_t& value, const char* help) const {
  return COption(app_->add_option(name, value, help));
}

COption CParser::Add(const char* name, std::optional<std::uint32_t>& value, const char* help) const {
  return COption(app_->add_option(name, value, help));
}

COption CParser::Add(const char* name, std::optional<std::int32_t>& value, const char* help) const {
  return COption(app_->add_option(name, value, help));
}

COption CParser::AddFlag(const char* name, bool& value, const char* help) const {
  return COption(app_->add_flag(name, value, help));
}

void CParser::Footer(std::string text) const {
  app_->footer(std::move(text));
}

}  // namespace tvmgr
