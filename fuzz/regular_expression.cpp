// Matches the regular expression in the first line against the other lines.

#include "common/predicate.h"
#include "fuzz/driver.h"

using namespace quorvex;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  std::string_view rest = fuzz::view(bytes, size);
  const auto nextLine = [&] {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    return line;
  };
  const Result<Predicate> predicate = Predicate::matching(nextLine());
  if (!predicate) return 0;
  while (!rest.empty()) {
    const std::string_view subpath = nextLine();
    const Result<bool> matched = predicate->evaluate(subpath);
    if (!matched) break;
    fuzz::require(predicate->evaluate(subpath).value() == *matched);
  }
  return 0;
}
