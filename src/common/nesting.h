#pragma once

namespace quorvex {

/// How many arrays, dictionaries and objects, or documents of a full-text index, may lie inside
/// each other in any file. Readers refuse more, so that walking a tree that was read never exhausts
/// the stack; writers refuse more, so that what they write can be read.
inline constexpr unsigned maximumNesting = 128;

}  // namespace quorvex
