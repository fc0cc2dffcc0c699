// The options of every command that prints one table.
#include <CLI/CLI.hpp>
#include <memory>

#include "options/command_parsers.h"
#include "output/record_output.h"

namespace tvmgr {

void AddTableOptions(const CParser& parser, std::vector<std::string> headings) {
  CLI::App* program = &parser.App();
  while (program->get_parent() != nullptr) {
    program = program->get_parent();
  }
  // With either of them there is another table, or none. (Told to the parser, each of them would list all tables in its help.)
  CLI::Option* const others[] = {program->get_option_no_throw("--json"),
                                 program->get_option_no_throw("--printers")};
  const auto view = std::make_shared<tagTableView>();
  const auto add = [&](const std::string& name, const std::string& help, auto read) {
    const auto take = [view, headings, read, name, first = others[0],
                       second = others[1]](const std::string& text) {
      for (const CLI::Option* const other : {first, second}) {
        if (other != nullptr && other->count() > 0) {
          throw CLI::ValidationError(name, "for tables only, not with " + other->get_name());
        }
      }
      const std::string problem = read(text, headings, *view);
      if (!problem.empty()) {
        throw CLI::ValidationError(name, problem);
      }
      SetTableView(*view);
    };
    parser.App().add_option_function<std::string>(name, take, help);
  };
  add("--columns", "the columns of the table, with commas between them", ReadColumns);
  add("--sort", "the column by which the rows are sorted; COLUMN:desc: the last first", ReadSort);
}

}  // namespace tvmgr
