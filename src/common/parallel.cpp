#include "common/parallel.h"

#include <algorithm>
#include <atomic>

namespace quorvex {

void forEachBlock(std::size_t count, std::size_t blockSize, unsigned workers,
                  const std::function<void(std::size_t, std::size_t, unsigned)>& work) {
  std::atomic<std::size_t> next = 0;
  const std::size_t blocks = (count + blockSize - 1) / blockSize;
  const auto threads = static_cast<unsigned>(std::clamp<std::size_t>(blocks, 1, workers));
  runInParallel(threads, [&](unsigned worker) {
    for (;;) {
      const std::size_t begin = next.fetch_add(blockSize);
      if (begin >= count) return;
      work(begin, std::min(count, begin + blockSize), worker);
    }
  });
}

}  // namespace quorvex
