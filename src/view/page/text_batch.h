#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "quorvex/help_index.h"

namespace quorvex::view {

/// Text of a page as its reader sees it, one block per line, that knows which bytes of the page it
/// stands for.
class TextBatch {
 public:
  /// Appends text of the page (UTF-8) with its character references decoded.
  void append(std::string_view page, TextRange range);
  void endBlock() { separate('\n'); }
  /// Appends a blank that stands for no text of the page.
  void appendBlank() { separate(' '); }
  void clear();

  const std::string& text() const { return _text; }
  bool endsWithSpace() const;

  /// Walks ranges of the text in their order.
  class Sources {
   public:
    Sources(const TextBatch& batch, std::string_view page) : _batch(batch), _page(page) {}
    /// Returns the stretches of the page behind a range: whole characters, ascending, each without
    /// a tag in it. No range may begin before the one that was given last.
    std::vector<TextRange> of(TextRange range);

   private:
    const TextBatch& _batch;
    std::string_view _page;
    std::size_t _piece = 0;
  };

 private:
  struct Piece {
    TextRange text;
    TextRange source;
    bool isVerbatim;
  };
  void separate(char separator);
  void appendVerbatim(std::string_view page, TextRange range);

  std::string _text;
  std::vector<Piece> _pieces;
};

}  // namespace quorvex::view
