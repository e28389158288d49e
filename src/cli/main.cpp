#include "cli/entry.h"

int main(int argc, char** argv) {
  return quorvex::quorvexMain({argv, static_cast<std::size_t>(argc)});
}
