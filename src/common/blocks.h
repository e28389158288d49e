#pragma once

#include <cstddef>
#include <functional>

namespace quorvex::docuvault {

/// Calls `work(begin, end, worker)` for consecutive blocks of `blockSize` that cover [0, count), on
/// up to `workers` threads (worker < workers). Which thread takes a block is left open, so a
/// block's result must depend on the block alone. What a block throws is thrown again here.
void forEachBlock(
    std::size_t count, std::size_t blockSize, unsigned workers,
    const std::function<void(std::size_t begin, std::size_t end, unsigned worker)>& work);

}  // namespace quorvex::docuvault
