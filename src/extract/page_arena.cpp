#include "extract/page_arena.h"

#include <new>

#include <sys/mman.h>

namespace quorvex {

namespace {

/// Enough for all but the largest trees. Only the touched part uses memory. A multiple of the
/// alignment of nodes, as all sizes of pieces are.
constexpr std::size_t pieceSize = std::size_t{8} * 1024 * 1024;

}  // namespace

/// Kept by each thread between pages: the next page would pay for each fresh 4 KB.
thread_local PageArena::Piece PageArena::_spare;

void PageArena::Unmap::operator()(char* piece) const {
  ::munmap(piece, size);
}

PageArena::Piece PageArena::mapped(std::size_t size) {
  void* const piece = ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (piece == MAP_FAILED) throw std::bad_alloc();
  return Piece(static_cast<char*>(piece), Unmap{size});
}

void PageArena::use(const Piece& piece) {
  _begin = piece.get();
  _size = piece.get_deleter().size;
  _used = 0;
}

PageArena::PageArena() {
  _pieces.push_back(_spare != nullptr ? std::move(_spare) : mapped(pieceSize));
  use(_pieces.back());
}

PageArena::~PageArena() {
  _spare = std::move(_pieces.front());
}

void PageArena::addPiece(std::size_t size) {
  _pieces.push_back(mapped((size + pieceSize - 1) / pieceSize * pieceSize));
  use(_pieces.back());
}

void releaseSpareArena() {
  PageArena::_spare.reset();
}

}  // namespace quorvex
