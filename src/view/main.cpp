#include <cstddef>
#include <span>

#include "view/view_program.h"

int main(int argc, char** argv) {
  const std::span<char* const> arguments(argv, static_cast<std::size_t>(argc));
  return quorvex::view::runViewProgram(arguments.empty() ? arguments : arguments.subspan(1));
}
