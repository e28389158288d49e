#include "semantic/writing/index_writer.h"

#include <cmath>

#include "common/property_codec.h"
#include "semantic/format/article_table.h"
#include "semantic/format/index_format.h"
#include "semantic/format/term_sections.h"
#include "semantic/format/term_weights.h"

namespace quorvex::docuvault {

namespace {

/// Writes the scales, and the vectors, each scaled to the full range of a signed byte.
void addVectors(IndexSections& sections, const TermMatrix& terms, const ReducedRows& reduced) {
  std::string& scales = sections[Section::scales];
  std::string& vectors = sections[Section::vectors];
  std::string lengths;
  vectors.reserve(static_cast<std::size_t>(reduced.rows.size()));
  for (Eigen::Index i = 0; i < reduced.rows.rows(); ++i) {
    const auto row = reduced.rows.row(i);
    const float largest = row.size() == 0 ? 0 : row.cwiseAbs().maxCoeff();
    const float factor = largest > 0 ? 127 / largest : 0;
    for (const float number : row) {
      vectors.push_back(static_cast<char>(std::lround(number * factor)));
    }
    appendFloat(lengths, row.norm());
  }
  for (const float scale : terms.matrix.rowScale)
    appendFloat(scales, scale);
  scales += lengths;
  for (const double energy : reduced.energy) {
    appendFloat(scales, energy > 1e-30 ? static_cast<float>(1 / energy) : 0);
  }
}

std::uint64_t addTerms(IndexSections& sections, const TermMatrix& terms) {
  const SparseMatrix byTerm = terms.matrix.transposed();
  TermSectionsBuilder builder;
  for (std::size_t id = 0; id < terms.terms.size(); ++id) {
    builder.startTerm(terms.terms[id], terms.globalWeights[id]);
    for (std::size_t i = byTerm.start[id]; i < byTerm.start[id + 1]; ++i) {
      builder.addPosting(numberOf(byTerm.entries[i]), codeOf(byTerm.entries[i]));
    }
  }
  builder.take(sections);
  return builder.postingCount();
}

}  // namespace

std::string writeIndex(const std::string& language, const std::vector<ArticleRecord>& records,
                       const TermMatrix& terms, const ReducedRows& reduced) {
  IndexSections sections;
  ArticleTableBuilder articles;
  for (const ArticleRecord& record : records)
    articles.add(record);
  if (!articles.take(sections)) return {};
  addVectors(sections, terms, reduced);
  const std::uint64_t postings = addTerms(sections, terms);
  appendProperties(sections[Section::attributes], {});
  appendInfo(sections[Section::info],
             {.articles = articles.count(),
              .terms = static_cast<std::uint32_t>(terms.terms.size()),
              .dimensions = static_cast<std::uint32_t>(reduced.rows.cols()),
              .excluded = articles.excludedCount(),
              .postings = postings,
              .shareOfVariance = reduced.shareOfVariance,
              .language = language});
  return sections.assemble();
}

}  // namespace quorvex::docuvault
