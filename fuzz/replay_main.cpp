// Replaces libFuzzer where it is missing: runs a driver once on each file in the folders given as
// arguments, and on reproducible mutations of it.

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "fuzz/driver.h"

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments);

namespace {

std::mt19937& randomNumbers() {
  static std::mt19937 generator(1);
  return generator;
}

void run(const std::vector<std::uint8_t>& input) {
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

void runMutated(std::vector<std::uint8_t> input) {
  constexpr int rounds = 200;
  const std::size_t size = input.size();
  input.resize(size + quorvex::fuzz::roomToGrow);
  for (int i = 0; i < rounds; ++i) {
    std::vector<std::uint8_t> changed = input;
    const auto seed = static_cast<unsigned>(randomNumbers()());
    changed.resize(LLVMFuzzerCustomMutator != nullptr
                       ? LLVMFuzzerCustomMutator(changed.data(), size, changed.size(), seed)
                       : LLVMFuzzerMutate(changed.data(), size, changed.size()));
    run(changed);
  }
}

}  // namespace

std::size_t LLVMFuzzerMutate(std::uint8_t* bytes, std::size_t size, std::size_t maximum) {
  if (size < maximum && randomNumbers()() % 4 == 0) ++size;
  if (size > 0 && randomNumbers()() % 4 == 0) size = randomNumbers()() % size;
  for (auto left = 1 + randomNumbers()() % 3; size > 0 && left > 0; --left) {
    static constexpr std::array<std::uint8_t, 6> edges{0, 1, 0x7F, 0x80, 0xFE, 0xFF};
    const auto number = randomNumbers()();
    bytes[randomNumbers()() % size] =
        number % 2 == 0 ? edges[number / 2 % edges.size()] : static_cast<std::uint8_t>(number / 2);
  }
  return size;
}

int main(int argc, char** argv) {
  if (LLVMFuzzerInitialize(&argc, &argv) != 0) return 1;
  int runs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
      if (!entry.is_regular_file()) continue;
      std::ifstream file(entry.path(), std::ios::binary);
      const std::vector<std::uint8_t> input{std::istreambuf_iterator<char>(file), {}};
      run(input);
      runMutated(input);
      ++runs;
    }
  }
  std::fprintf(stderr, "%d inputs\n", runs);
  return runs > 0 ? 0 : 1;
}
