#pragma once

#include <cstddef>
#include <vector>

namespace quorvex::reader {

struct ScoredPage {
  std::size_t page = 0;
  double score = 0;
};

/// The weight of the ranking by meaning in a page's joint score. Short queries are mostly names,
/// which their page contains; a question in sentences has words that the page may not use: 0.4 for
/// queries of up to 4 words, 0.8 from 12 words on. On two collections of long questions and on
/// halves of each, weights from 0.75 to 0.9 for long queries do about equally well.
double semanticPart(std::size_t wordCount);

/// Joins two rankings, each best first, into one, best first: a page's score is the weighted sum of
/// its scores, each relative to the best of its ranking (Fox, Shaw 1994). Joins scores, not ranks
/// as in reciprocal rank fusion (Cormack, Clarke, Buettcher 2009), because scores show how far
/// ahead the first page is: on the test collections, ranks lose a twentieth of the average
/// precision. `wordCount`: of the query.
std::vector<ScoredPage> fuse(const std::vector<ScoredPage>& byWords,
                             const std::vector<ScoredPage>& byMeaning, std::size_t wordCount);

}  // namespace quorvex::reader
