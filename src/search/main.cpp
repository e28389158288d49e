#include <cstddef>
#include <span>

#include "search/search_program.h"

int main(int argc, char** argv) {
  const std::span<char* const> arguments(argv, static_cast<std::size_t>(argc));
  return quorvex::runSearchProgram(arguments.empty() ? arguments : arguments.subspan(1));
}
