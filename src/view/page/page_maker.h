#pragma once

#include "view/book/book_site.h"
#include "view/http/message.h"
#include "view/index/index_keeper.h"

namespace quorvex::view {

/// Makes pages in which the words of the reader's question are marked, as far as there is an index
/// by now. `keeper` must outlive it.
PageMaker pageMaker(IndexKeeper& keeper);

/// Whether a request to the book's host is for a file that every page is given, not for one of the
/// book.
bool isOwnFile(const Request& request);
/// Answers such a request.
Response ownFile(const Request& request);

}  // namespace quorvex::view
