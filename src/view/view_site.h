#pragma once

#include <memory>
#include <string>

#include "quorvex/help_index.h"
#include "view/book/book_folder.h"
#include "view/http/message.h"
#include "view/index/index_keeper.h"

namespace quorvex::view {

/// What the interface asks for: its own files, what the book is, the state of its index, answers to
/// questions, related pages, and whether a page links to an address. Thread-safe.
class ViewSite {
 public:
  struct Book {
    std::string title;  ///< if neither the index nor the start page tells a better one
    std::string folder;
    std::string origin;  ///< of its pages
    bool allowsNetwork = false;
  };

  ViewSite(Book book, std::shared_ptr<const BookFolder> folder, IndexKeeper& keeper)
      : _book(std::move(book)), _folder(std::move(folder)), _keeper(keeper) {}

  /// `request`: with the path behind the secret, such as "search".
  Response answer(const Request& request) const;

 private:
  std::string bookAsJson() const;
  std::string titleWithoutIndex(const std::string& startPage) const;
  std::string stateAsJson() const;
  Response search(const Request& request) const;
  Response related(const Request& request) const;
  Response link(const Request& request) const;
  Response notReady() const;

  Book _book;
  std::shared_ptr<const BookFolder> _folder;
  IndexKeeper& _keeper;
};

}  // namespace quorvex::view
