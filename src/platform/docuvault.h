#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/value.h"
#include "platform/text_words.h"

// Docuvault, the semantic index: latent semantic indexing of help articles
// (Deerwester, Dumais, Furnas, Landauer, Harshman 1990).

namespace quorvex {

// Keys of an article's properties.
inline constexpr std::string_view HelpDocPropertyTitle = "HelpDocPropertyTitle";
inline constexpr std::string_view HelpDocPropertyDescription = "HelpDocPropertyDescription";
inline constexpr std::string_view HelpDocPropertyContent = "HelpDocPropertyContent";
inline constexpr std::string_view HelpDocPropertyExcludeFromSearch =
    "HelpDocPropertyExcludeFromSearch";
inline constexpr std::string_view HelpDocPropertyKeywords = "HelpDocPropertyKeywords";
inline constexpr std::string_view HelpDocPropertyActions = "HelpDocPropertyActions";
inline constexpr std::string_view HelpDocPropertyActionName = "HelpDocPropertyActionName";
inline constexpr std::string_view HelpDocPropertyActionLink = "HelpDocPropertyActionLink";

/// Index attribute, boolean: the book is too small for a useful semantic index.
inline constexpr std::string_view HelpRDXIndexAttributeIgnoreRDXKey =
    "HelpRDXIndexAttributeIgnoreRDXKey";

/// One answer to a query.
struct HelpRDXAnswer {
  std::string subPath;
  std::string title;
  double similarity = 0;    ///< cosine, 1 for the same direction
  std::size_t article = 0;  ///< number from 0, in the order of addition
};

/// A semantic index, immutable apart from its attributes. Queries are thread-safe once the
/// attributes are set.
class HelpRDXIndex {
 public:
  virtual ~HelpRDXIndex() = default;

  /// Opens an index from its versioned data, in place; null if the data is not a valid index.
  static std::shared_ptr<HelpRDXIndex> HelpRDXIndexWithVersionedData(const Data& data);

  virtual void setObject(const Value& object, std::string_view attribute) = 0;
  virtual std::optional<Value> objectForAttribute(std::string_view attribute) const = 0;

  /// Returns the index with a version header, ready to be stored.
  virtual Data versionedRDXIndexData() const = 0;

  /// Returns the locale identifier of its language; empty for none.
  virtual std::string language() const = 0;

  /// Returns readable text: language, number of articles and terms, dimensions, share of variance
  /// kept, and whether the ignore attribute is set.
  virtual std::string description() const = 0;

  /// Returns the best first, ties by sub-path; articles excluded from search never appear. A text
  /// without a known word has no answers.
  virtual std::vector<HelpRDXAnswer> articlesNearestToText(std::string_view text,
                                                           std::size_t count) const = 0;
  /// The article itself is not among its answers.
  virtual std::vector<HelpRDXAnswer> articlesNearestToArticle(std::string_view subPath,
                                                              std::size_t count) const = 0;
};

struct HelpAnalyzedArticle;
/// An article as a builder keeps it: without its content.
using HelpAnalyzedArticleRef = std::shared_ptr<HelpAnalyzedArticle>;

/// One article for HelpRDXIndexBuilder::addHelpArticles().
struct HelpArticle {
  Dictionary properties;
  std::string subPath;
  /// Unless null, from an analysis of the same builder, which takes it over; replaces all others.
  HelpAnalyzedArticleRef analyzed = {};
};

/// Analyses articles before they are added, in any order. Serves one thread at a time; several
/// analyses of a builder work concurrently. Must not be used once the index is computed.
class HelpArticleAnalysis {
 public:
  virtual ~HelpArticleAnalysis() = default;
  /// `words`: of the content, always from the same analysis; null: of the content in the
  /// properties.
  virtual HelpAnalyzedArticleRef analyze(const HelpArticle& article, const TextWords* words) = 0;
};

/// Collects articles and computes their index. Not thread-safe except for createAnalysis().
class HelpRDXIndexBuilder {
 public:
  /// `language` is a locale identifier ("en_US") that selects the stemmer.
  HelpRDXIndexBuilder(const std::optional<std::vector<std::string>>& knownPhraseArray,
                      const std::optional<std::string>& language);
  ~HelpRDXIndexBuilder();
  HelpRDXIndexBuilder(const HelpRDXIndexBuilder&) = delete;
  HelpRDXIndexBuilder& operator=(const HelpRDXIndexBuilder&) = delete;

  void addHelpArticleWithProperties(const Dictionary& properties, std::string_view subPath);

  /// Adds each article in order like addHelpArticleWithProperties, but analyses them on `workers`
  /// threads. Calls `articleAt(i)` once for each i, concurrently if workers > 1. The index does not
  /// depend on `workers`.
  void addHelpArticles(std::size_t count, unsigned workers,
                       const std::function<HelpArticle(std::size_t)>& articleAt);

  std::unique_ptr<HelpArticleAnalysis> createAnalysis();

  /// Returns the index of the articles so far. The first call after an addition computes it on
  /// `workers` threads. Null if there are more articles, or longer texts, than an index can store.
  std::shared_ptr<HelpRDXIndex> index(unsigned workers = 1);

 private:
  struct State;
  std::unique_ptr<State> _state;
};

}  // namespace quorvex
