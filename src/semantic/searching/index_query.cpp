#include "semantic/searching/index_query.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

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

std::int32_t squaredNorm(const std::int8_t* vector, std::size_t size) {
  std::int32_t sum = 0;
  for (std::size_t j = 0; j < size; ++j)
    sum += std::int32_t{vector[j]} * std::int32_t{vector[j]};
  return sum;
}

/// 0 for the zero vector.
float inverseNorm(std::int32_t squared) {
  return squared == 0 ? 0 : 1 / std::sqrt(static_cast<float>(squared));
}

struct Products {
  std::int32_t dot = 0;
  std::int32_t squared = 0;
};

/// Multiplies a vector by another and by itself. Compilers make vector instructions of it.
Products multiplied(const std::int8_t* vector, const std::int16_t* other, std::size_t size) {
  Products products;
  for (std::size_t j = 0; j < size; ++j) {
    const std::int32_t number = vector[j];
    products.dot += number * std::int32_t{other[j]};
    products.squared += number * number;
  }
  return products;
}

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
    _index.forEachRowScale(
        [&](std::uint32_t article, float scale) { _scores[article] *= scale * factor; });
  }

  /// Folds the terms into the reduced space.
  void foldIn() {
    _index.forEachVector([&](std::uint32_t article, const ArticleVector& vector) {
      const float score = _scores[article];
      if (score != 0) addDirection(vector.direction, score * vector.length);
    });
    for (std::uint32_t j = 0; j < _index.dimensions(); ++j) {
      _direction[j] *= _index.inverseEnergy(j);
    }
  }

  void addDirection(const std::int8_t* direction, float length) {
    const float factor = length * inverseNorm(squaredNorm(direction, _direction.size()));
    for (std::size_t j = 0; j < _direction.size(); ++j) {
      _direction[j] += factor * static_cast<float>(direction[j]);
    }
  }

  /// Omits `itself`.
  std::vector<NearArticle> answers(std::size_t count, std::optional<std::uint32_t> itself) {
    addReducedPart();
    leaveOut(itself);
    std::vector<std::uint32_t> found;
    for (std::uint32_t i = 0; i < _index.articles(); ++i) {
      if (_scores[i] > 0) found.push_back(i);  // also false for NaN
    }
    sortBest(found, count);
    std::vector<NearArticle> answers;
    answers.reserve(found.size());
    for (const std::uint32_t article : found)
      answers.push_back({article, static_cast<double>(_scores[article])});
    return answers;
  }

 private:
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
    _index.forEachVector([&](std::uint32_t article, const ArticleVector& vector) {
      const Products products = multiplied(vector.direction, direction.data(), direction.size());
      const auto reduced = static_cast<float>(products.dot);
      float& score = _scores[article];
      score = (1 - semanticShare) * score + share * reduced * inverseNorm(products.squared);
      score = std::min(score, 1.0F);  // rounding may pass 1
    });
  }

  void leaveOut(std::optional<std::uint32_t> itself) {
    if (itself) _scores[*itself] = 0;
    _index.articleTable().forEachExcluded([&](std::uint32_t article) { _scores[article] = 0; });
  }

  /// Keeps the `count` best, in order. Reads the sub-paths only of those that tie.
  void sortBest(std::vector<std::uint32_t>& found, std::size_t count) const {
    if (count == 0) return found.clear();
    const auto better = [this](std::uint32_t a, std::uint32_t b) {
      return _scores[a] != _scores[b] ? _scores[a] > _scores[b] : a < b;
    };
    auto end = found.end();
    if (count < found.size()) {
      end = found.begin() + static_cast<std::ptrdiff_t>(count);
      std::nth_element(found.begin(), end - 1, found.end(), better);
      const float last = _scores[*(end - 1)];
      end = std::partition(end, found.end(), [&](std::uint32_t i) { return _scores[i] == last; });
    }
    std::sort(found.begin(), end, better);
    for (auto tie = found.begin(); tie != end;) {
      const float score = _scores[*tie];
      const auto next =
          std::find_if(tie, end, [&](std::uint32_t i) { return _scores[i] != score; });
      if (next - tie > 1) sortBySubPath(std::span(tie, next));
      tie = next;
    }
    found.resize(std::min(count, found.size()));
  }

  void sortBySubPath(std::span<std::uint32_t> articles) const {
    const ArticleTable& table = _index.articleTable();
    std::vector<std::pair<std::string, std::uint32_t>> paths;
    paths.reserve(articles.size());
    for (const std::uint32_t article : articles)
      paths.emplace_back(table.subPath(article), article);
    std::sort(paths.begin(), paths.end());
    for (std::size_t i = 0; i < articles.size(); ++i)
      articles[i] = paths[i].second;
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
  const std::optional<std::uint32_t> known = index.articleTable().find(subPath);
  if (!known) return {};
  const std::uint32_t article = *known;

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
  index.visitVector(article, [&](std::uint32_t, const ArticleVector& vector) {
    query.addDirection(vector.direction, 1);
  });
  return query.answers(count, article);
}

}  // namespace quorvex::docuvault
