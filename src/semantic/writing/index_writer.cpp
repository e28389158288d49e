#include "semantic/writing/index_writer.h"

#include <algorithm>
#include <cmath>

#include "semantic/format/index_format.h"
#include "semantic/format/term_weights.h"

namespace quorvex::docuvault {

namespace {

std::string infoSection(const std::string& language, const std::vector<ArticleRecord>& records,
                        const TermMatrix& terms, const ReducedRows& reduced) {
  const auto excluded =
      std::count_if(records.begin(), records.end(),
                    [](const ArticleRecord& record) { return record.excludedFromSearch; });
  std::string out;
  appendU32(out, static_cast<std::uint32_t>(records.size()));
  appendU32(out, static_cast<std::uint32_t>(terms.terms.size()));
  appendU32(out, static_cast<std::uint32_t>(reduced.rows.cols()));
  appendU32(out, static_cast<std::uint32_t>(excluded));
  appendU64(out, terms.matrix.entries.size());
  appendDouble(out, reduced.shareOfVariance);
  return out + language;
}

std::string articlesSection(const std::vector<ArticleRecord>& records) {
  std::string ends;
  std::string bytes;
  for (const ArticleRecord& record : records) {
    bytes.push_back(record.excludedFromSearch ? '\1' : '\0');
    appendText(bytes, record.subPath);
    appendText(bytes, record.title);
    appendText(bytes, record.description);
    appendVarint(bytes, record.keywords.size());
    for (const std::string& keyword : record.keywords)
      appendText(bytes, keyword);
    appendVarint(bytes, record.actions.size());
    for (const ArticleRecord::Action& action : record.actions) {
      appendText(bytes, action.name);
      appendText(bytes, action.link);
    }
    appendU32(ends, static_cast<std::uint32_t>(bytes.size()));
  }
  return ends + bytes;
}

/// Writes the scales, and the vectors, each scaled to the full range of a signed byte.
void vectorSections(const TermMatrix& terms, const ReducedRows& reduced, std::string& scales,
                    std::string& vectors) {
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

struct TermSections {
  std::string blocks;
  std::string terms;
  std::string postings;
  std::string counts;
};

TermSections termSections(const TermMatrix& terms) {
  const SparseMatrix byTerm = terms.matrix.transposed();
  TermSections out;
  std::string_view previous;
  std::string list;
  std::size_t before = 0;
  for (std::size_t id = 0; id < terms.terms.size(); ++id) {
    const std::string_view term = terms.terms[id];
    std::size_t shared = 0;
    if (id % termBlockSize == 0) {
      appendU32(out.blocks, static_cast<std::uint32_t>(out.terms.size()));
      appendU32(out.blocks, static_cast<std::uint32_t>(out.postings.size()));
      appendU32(out.blocks, static_cast<std::uint32_t>(before));
    } else {
      shared = sharedPrefixSize(term, previous);
    }
    list.clear();
    std::uint32_t next = 0;
    for (std::size_t i = byTerm.start[id]; i < byTerm.start[id + 1]; ++i, ++before) {
      const std::uint32_t article = numberOf(byTerm.entries[i]);
      appendVarint(list, article - next);
      next = article + 1;
      const std::uint32_t code = codeOf(byTerm.entries[i]);
      if (before % 2 == 0) {
        out.counts.push_back(static_cast<char>(code));
      } else {
        out.counts.back() = static_cast<char>(out.counts.back() | static_cast<char>(code << 4));
      }
    }
    appendVarint(out.terms, shared);
    appendText(out.terms, term.substr(shared));
    out.terms.push_back(static_cast<char>(terms.globalWeights[id]));
    appendVarint(out.terms, byTerm.start[id + 1] - byTerm.start[id]);
    appendVarint(out.terms, list.size());
    out.postings += list;
    previous = term;
  }
  return out;
}

}  // namespace

std::string writeIndex(const std::string& language, const std::vector<ArticleRecord>& records,
                       const TermMatrix& terms, const ReducedRows& reduced) {
  std::string scales;
  std::string vectors;
  vectorSections(terms, reduced, scales, vectors);
  const TermSections byTerm = termSections(terms);
  const std::string info = infoSection(language, records, terms, reduced);
  const std::string encodedAttributes = encodeAttributes({});
  const std::string articles = articlesSection(records);
  // No 32-bit offset or count exceeds these sizes.
  for (const std::size_t size : {articles.size(), byTerm.terms.size(), byTerm.postings.size(),
                                 terms.matrix.entries.size()}) {
    if (size > UINT32_MAX) return {};
  }
  return joinSections({info, encodedAttributes, articles, scales, vectors, byTerm.blocks,
                       byTerm.terms, byTerm.postings, byTerm.counts});
}

}  // namespace quorvex::docuvault
