#pragma once

namespace quorvex {

/// How deeply arrays, dictionaries and objects, or documents of a full-text index, may nest in any
/// file. Readers refuse more, so walking a tree never exhausts the stack; writers refuse more, so
/// their output can be read.
inline constexpr unsigned maximumNesting = 128;

}  // namespace quorvex
