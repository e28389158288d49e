#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace quorvex {

/// Memory for the tree of one page, freed as a whole. Mapped directly, so that what a large page
/// took goes back to the system at once. Throws std::bad_alloc.
class PageArena {
 public:
  PageArena();
  ~PageArena();
  PageArena(const PageArena&) = delete;
  PageArena& operator=(const PageArena&) = delete;

  /// Returns memory for a node, which is not initialised.
  void* allocateNode(std::size_t size) {
    _used = (_used + alignof(void*) - 1) / alignof(void*) * alignof(void*);
    return allocateBytes(size);
  }

  char* allocateBytes(std::size_t size) {
    if (size > _size - _used) addPiece(size);
    return _begin + std::exchange(_used, _used + size);
  }

  /// Enlarges the block that ends at `end` in place; false unless it is the last and has room.
  bool extend(const char* end, std::size_t more) {
    if (end != _begin + _used || more > _size - _used) return false;
    _used += more;
    return true;
  }

 private:
  struct Unmap {
    std::size_t size = 0;
    void operator()(char* piece) const;
  };
  using Piece = std::unique_ptr<char, Unmap>;

  static Piece mapped(std::size_t size);
  void addPiece(std::size_t size);
  void use(const Piece& piece);

  friend void releaseSpareArena();
  static thread_local Piece _spare;

  std::vector<Piece> _pieces;
  // The last piece:
  char* _begin = nullptr;
  std::size_t _size = 0;
  std::size_t _used = 0;
};

/// Frees what the calling thread keeps for its next page.
void releaseSpareArena();

}  // namespace quorvex
