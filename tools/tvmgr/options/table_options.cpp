// The options of every command that prints one table.
#include <memory>

#include "options/command_parsers.h"
#include "output/record_output.h"

namespace tvmgr {

void AddTableOptions(CLI::App* parser, std::vector<std::string> headings) {
  CLI::App* program = parser;
  while (program->get_parent() != nullptr) {
    program = program->get_parent();
  }
  // With either of them there is another table, or none.
  CLI::Option* const others[] = {program->get_option_no_throw("--json"),
                                 program->get_option_no_throw("--printers")};
  const auto view = std::make_shared<tagTableView>();
  const auto add = [&](const std::string& name, const std::string& help, auto read) {
    CLI::Option* const option = parser->add_option_function<std::string>(
        name,
        [view, headings, read, name](const std::string& text) {
          const std::string problem = read(text, headings, *view);
          if (!problem.empty()) {
            throw CLI::ValidationError(name, problem);
          }
          SetTableView(*view);
        },
        help);
    for (CLI::Option* const other : others) {
      if (other != nullptr) {
        option->excludes(other);
      }
    }
  };
  add("--columns", "the columns of the table, with commas between them", ReadColumns);
  add("--sort", "the column by which the rows are sorted; COLUMN:desc: the last first", ReadSort);
}

}  // namespace tvmgr
