#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fulltext/reading/index_reader.h"
#include "fulltext/searching/name_surroundings.h"
#include "fulltext/searching/title_index.h"
#include "platform/textsift.h"
#include "text/tokenizer.h"

namespace quorvex::textsearch {

/// A name that was asked for, and where it is defined.
struct NameMatch {
  /// `place` is NameFinder::pageItself for a page that has the name in its title.
  NamePlace at;
  /// What is less than NameFinder::certain may be a coincidence.
  float quality = 0;
  std::string name;

  /// Best first.
  friend bool operator<(const NameMatch& a, const NameMatch& b) {
    return a.quality != b.quality ? a.quality > b.quality : a.at < b.at;
  }
};

/// Finds names as readers type them: whole, by their last parts, by their beginning, with what
/// qualifies them in the name itself or around its place, without regard to case. Thread-safe.
class NameFinder {
 public:
  static constexpr std::uint32_t pageItself = TSNamedPlace::pageItself;
  static constexpr float certain = 0.8F;

  NameFinder(const IndexReader& index, const TitleIndex& titles) : _index(index), _titles(titles) {}

  /// Returns the definitions that a whole query names, best first, at most one per document.
  std::vector<NameMatch> find(std::string_view query, Tokenizer& tokenizer,
                              const LookLimits& limits = {}) const;
  /// Returns names that begin with a text, or whose last parts do: titles, then other names in the
  /// order of their last parts; of a name that is defined in many places a few.
  std::vector<NameMatch> beginningWith(std::string_view text, std::size_t count,
                                       const LookLimits& limits = {}) const;
  /// Returns titles and names that hold all words of a query, shorter ones first, at most one per
  /// document. Reads all of them: for queries of which the index leaves out every word.
  std::vector<NameMatch> holding(std::string_view query, std::size_t count) const;

  /// Whether a text is a name, without regard to case.
  bool isName(std::string_view text) const;

 private:
  struct Wanted;

  void addDefinitions(const Wanted& wanted, Looks& looks, std::vector<NameMatch>& matches) const;
  void addTitles(const Wanted& wanted, Tokenizer& tokenizer, std::vector<NameMatch>& matches) const;
  void addByWords(std::string_view query, Looks& looks, std::vector<NameMatch>& matches) const;
  void addTitlesBeginning(const Wanted& wanted, std::vector<NameMatch>& matches) const;
  void addBeginning(const NameEntry& entry, const Wanted& wanted, Looks& looks,
                    std::vector<NameMatch>& matches) const;
  float remoteness(std::uint32_t document) const;
  static void preferPlain(const Wanted& wanted, Looks& looks, std::vector<NameMatch>& matches);

  const IndexReader& _index;
  const TitleIndex& _titles;
};

}  // namespace quorvex::textsearch
