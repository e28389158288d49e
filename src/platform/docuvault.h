#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/value.h"

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

/// Index attribute, boolean: the book is too small for a semantic index to be of use.
inline constexpr std::string_view HelpRDXIndexAttributeIgnoreRDXKey =
    "HelpRDXIndexAttributeIgnoreRDXKey";

/// One answer of a query.
struct HelpRDXAnswer {
  std::string subPath;
  std::string title;
  double similarity = 0;    ///< cosine, 1 for the same direction
  std::size_t article = 0;  ///< its number, from 0 on in the order in which they were added
};

/// A semantic index. Immutable but for its attributes; queries are safe from several threads once
/// the attributes are set.
class HelpRDXIndex {
 public:
  virtual ~HelpRDXIndex() = default;

  /// Rebuilds an index from its versioned data, in place; null when the bytes are not one.
  static std::shared_ptr<HelpRDXIndex> HelpRDXIndexWithVersionedData(const Data& data);

  virtual void setObject(const Value& object, std::string_view attribute) = 0;
  virtual std::optional<Value> objectForAttribute(std::string_view attribute) const = 0;

  /// The index with a version header, ready to be stored.
  virtual Data versionedRDXIndexData() const = 0;

  /// The locale identifier it was made for; empty for none.
  virtual std::string language() const = 0;

  /// Language, number of articles and terms, dimensions, share of variance kept, and whether the
  /// ignore attribute is set, for a person.
  virtual std::string description() const = 0;

  /// Best first, ties by sub-path; articles excluded from search never appear. A text without a
  /// known word has no answers.
  virtual std::vector<HelpRDXAnswer> articlesNearestToText(std::string_view text,
                                                           std::size_t count) const = 0;
  /// The article itself is not among its answers.
  virtual std::vector<HelpRDXAnswer> articlesNearestToArticle(std::string_view subPath,
                                                              std::size_t count) const = 0;
};

/// One article for the bulk operation.
struct HelpArticle {
  Dictionary properties;
  std::string subPath;
};

/// Collects articles and computes their index. Used by one thread.
class HelpRDXIndexBuilder {
 public:
  /// `language`: a locale identifier ("en_US"), which picks the stemmer.
  HelpRDXIndexBuilder(const std::optional<std::vector<std::string>>& knownPhraseArray,
                      const std::optional<std::string>& language);
  ~HelpRDXIndexBuilder();
  HelpRDXIndexBuilder(const HelpRDXIndexBuilder&) = delete;
  HelpRDXIndexBuilder& operator=(const HelpRDXIndexBuilder&) = delete;

  void addHelpArticleWithProperties(const Dictionary& properties, std::string_view subPath);

  /// The same as addHelpArticleWithProperties for each article in order, with the analysis spread
  /// over `workers` threads. `articleAt(i)` is called once for each i, from several threads at once
  /// when workers > 1; the index does not depend on the number of workers.
  void addHelpArticles(std::size_t count, unsigned workers,
                       const std::function<HelpArticle(std::size_t)>& articleAt);

  /// The index of the articles so far. Computed on the first call, with `workers` threads; adding
  /// afterwards makes the next call compute it again. Null when the articles are more, or their
  /// texts longer, than an index can hold.
  std::shared_ptr<HelpRDXIndex> index(unsigned workers = 1);

 private:
  struct State;
  std::unique_ptr<State> _state;
};

}  // namespace quorvex
