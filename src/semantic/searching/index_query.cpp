#include "semantic/searching/index_query.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "semantic/format/term_weights.h"

// The similarity of a query q and an article d is the cosine of their vectors, each of which
// concatenates term weights and a position in the reduced space:
//
//   (1 - share) * <q, a_d> + share * cos(V^T q, V^T a_d)
//
// with q of length 1 and a_d the row of d. The term vectors V are not stored. With the articles'
// vectors D = A V, whose columns have the energies E, V is A^T D E^-1, so V^T q = E^-1 D^T (A q),
// and A q is already known: it is the scores of the first part.

namespace quorvex::docuvault {

namespace {

/// The state of one query on one index.
class Query {
 public:
  explicit Query(const SemanticIndexReader& index)
      : _index(index), _scores(index.articles()), _direction(index.dimensions()) {}

  void addTerm(const IndexedTerm& term, double weight) {
    _squaredLength += weight * weight;
    const float factor = static_cast<float>(weight) * term.globalWeight;
    std::array<float, 16> scores = localWeights();
    for (float& score : scores)
      score *= factor;
    _index.forEachPosting(term, [&](std::uint32_t article, unsigned code) {
      _scores[article] += scores[code];
      return true;
    });
  }

  /// Turns `_scores` into the cosines of the first part.
  void finishTerms() {
    const float factor = _squaredLength > 0 ? static_cast<float>(1 / std::sqrt(_squaredLength)) : 0;
    for (std::uint32_t i = 0; i < _index.articles(); ++i) {
      _scores[i] *= _index.rowScale(i) * factor;
    }
  }

  /// Folds the terms into the reduced space.
  void foldIn() {
    for (std::uint32_t i = 0; i < _index.articles(); ++i) {
      if (_scores[i] == 0) continue;
      addDirection(i, _scores[i] * _index.vectorLength(i));
    }
    for (std::uint32_t j = 0; j < _index.dimensions(); ++j) {
      _direction[j] *= _index.inverseEnergy(j);
    }
  }

  void addDirection(std::uint32_t article, float length) {
    const std::int8_t* vector = _index.vector(article);
    const float factor = length * _index.inverseVectorNorm(article);
    for (std::size_t j = 0; j < _direction.size(); ++j) {
      _direction[j] += factor * static_cast<float>(vector[j]);
    }
  }

  /// Omits `itself`.
  std::vector<NearArticle> answers(std::size_t count, std::optional<std::uint32_t> itself) {
    addReducedPart();
    std::vector<std::uint32_t> found;
    for (std::uint32_t i = 0; i < _index.articles(); ++i) {
      _scores[i] = std::min(_scores[i], 1.0F);  // rounding may pass 1
      // Also false for NaN.
      if (_scores[i] > 0 && i != itself && !_index.isExcluded(i)) found.push_back(i);
    }
    const auto better = [&](std::uint32_t a, std::uint32_t b) {
      if (_scores[a] != _scores[b]) return _scores[a] > _scores[b];
      const int order = _index.subPath(a).compare(_index.subPath(b));
      return order != 0 ? order < 0 : a < b;
    };
    const auto end = found.begin() + static_cast<std::ptrdiff_t>(std::min(count, found.size()));
    std::partial_sort(found.begin(), end, found.end(), better);
    std::vector<NearArticle> answers;
    for (auto i = found.begin(); i != end; ++i)
      answers.push_back({*i, static_cast<double>(_scores[*i])});
    return answers;
  }

 private:
  std::int32_t dot(const std::int8_t* vector, const std::int16_t* other) const {
    std::int32_t sum = 0;
    for (std::size_t j = 0; j < _direction.size(); ++j) {
      sum += std::int32_t{vector[j]} * std::int32_t{other[j]};
    }
    return sum;
  }

  /// Multiplies integers: 15 bits of the query's direction by 8 of an article's, summed over 256
  /// dimensions, fit in 31 bits.
  void addReducedPart() {
    float largest = 0;
    for (const float number : _direction)
      largest = std::max(largest, std::abs(number));
    const bool known = largest > 0 && std::isfinite(largest);
    std::vector<std::int16_t> direction(_direction.size());
    double squared = 0;
    for (std::size_t j = 0; known && j < direction.size(); ++j) {
      direction[j] = static_cast<std::int16_t>(std::lround(_direction[j] / largest * 32767));
      squared += static_cast<double>(direction[j]) * static_cast<double>(direction[j]);
    }
    const float share = known ? static_cast<float>(semanticShare / std::sqrt(squared)) : 0;
    for (std::uint32_t i = 0; i < _index.articles(); ++i) {
      const float reduced = static_cast<float>(dot(_index.vector(i), direction.data()));
      _scores[i] = (1 - semanticShare) * _scores[i] + share * reduced * _index.inverseVectorNorm(i);
    }
  }

  const SemanticIndexReader& _index;
  std::vector<float> _scores;     ///< by article
  std::vector<float> _direction;  ///< of the query in the reduced space, not normalised
  double _squaredLength = 0;
};

}  // namespace

std::vector<NearArticle> nearestToTerms(const SemanticIndexReader& index, const QueryTerms& terms,
                                        std::size_t count) {
  Query query(index);
  bool known = false;
  for (const auto& [text, occurrences] : terms) {
    const std::optional<IndexedTerm> term = index.find(text);
    if (!term || term->globalWeight <= 0) continue;
    known = true;
    const double global = std::pow(static_cast<double>(term->globalWeight), queryExponent);
    query.addTerm(*term, occurrences * global);
  }
  if (!known) return {};
  query.finishTerms();
  query.foldIn();
  return query.answers(count, std::nullopt);
}

std::vector<NearArticle> nearestToArticle(const SemanticIndexReader& index,
                                          std::string_view subPath, std::size_t count) {
  std::uint32_t article = 0;
  while (article < index.articles() && index.subPath(article) != subPath)
    ++article;
  if (article == index.articles()) return {};

  Query query(index);
  // Postings are stored by term, so finding the article's terms takes a pass over all of them: a
  // few milliseconds in a book of ten thousand pages, and no extra data in the index.
  index.forEachTerm([&](const IndexedTerm& term) {
    index.forEachPosting(term, [&](std::uint32_t candidate, unsigned code) {
      if (candidate != article) return candidate < article;
      const float weight = localWeights()[code] * term.globalWeight;
      query.addTerm(term, static_cast<double>(weight));
      return false;
    });
  });
  query.finishTerms();
  query.addDirection(article, 1);
  return query.answers(count, article);
}

}  // namespace quorvex::docuvault
