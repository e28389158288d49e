#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "view/book/book_folder.h"
#include "view/http/message.h"

namespace quorvex::view {

/// Makes the page that is sent of an HTML file's bytes, in UTF-8. `question`: what the reader
/// searched for, empty if nothing. Called from several threads.
using PageMaker = std::function<std::string(std::string_view bytes, const std::string& question)>;

/// Answers requests for the files of a book.
class BookSite {
 public:
  BookSite(std::shared_ptr<const BookFolder> folder, PageMaker pageMaker);

  Response answer(const Request& request) const;

 private:
  Response answerWithFile(const Request& request, const std::string& path,
                          const BookFolder::Found& found) const;
  Response answerWithPage(const Request& request, const BookFolder::Found& found) const;

  std::shared_ptr<const BookFolder> _folder;
  PageMaker _pageMaker;
};

}  // namespace quorvex::view
