#include "text/term_dictionary.h"

#include <algorithm>
#include <utility>

#include "common/bytes.h"
#include "common/lazy_reader.h"

namespace quorvex {

void TermDictionaryBuilder::add(std::string_view term, std::uint32_t documentCount,
                                std::uint64_t postingsSize, std::uint8_t extra) {
  if (_count % termsPerGroup == 0) {
    finishGroup();
    const std::size_t shared = sharedPrefixSize(_firstTerm, term);
    appendVarint(_directory, shared);
    appendText(_directory, term.substr(shared));
    _firstTerm = term;
    _previous = term;
  }
  const std::size_t shared = sharedPrefixSize(_previous, term);
  appendVarint(_numbers, shared);
  appendVarint(_numbers, term.size() - shared);
  appendVarint(_numbers, documentCount);
  appendVarint(_numbers, postingsSize - documentCount);
  if (_hasExtras) _extras += static_cast<char>(extra);
  _suffixes += term.substr(shared);
  _previous = term;
  _postings += documentCount;
  _postingBytes += postingsSize;
  ++_count;
}

void TermDictionaryBuilder::finishGroup() {
  if (_numbers.empty()) return;
  const std::size_t begin = _groups.size();
  appendText(_groups, std::exchange(_numbers, {}));
  _groups += std::exchange(_extras, {});
  _groups += std::exchange(_suffixes, {});
  appendVarint(_directory, _groups.size() - begin);
  appendVarint(_directory, std::exchange(_postings, 0));
  appendVarint(_directory, std::exchange(_postingBytes, 0));
}

std::string TermDictionaryBuilder::take() {
  finishGroup();
  std::string section;
  appendVarint(section, _count);
  section += _hasExtras ? '\1' : '\0';
  appendText(section, _directory);
  return section + std::move(_groups);
}

TermDictionary::TermDictionary(const LazyBytes& section) {
  const auto directory = std::make_shared<Directory>();
  if (read(section, *directory)) _directory = directory;
}

bool TermDictionary::read(const LazyBytes& section, Directory& directory) const {
  LazyReader reader(section);
  const std::uint64_t count = reader.varint();
  const std::uint64_t extras = reader.varint();
  const LazyBytes entries = reader.text();
  if (!reader.ok() || count > UINT32_MAX || extras > 1) return false;
  directory.count = static_cast<std::uint32_t>(count);
  directory.hasExtras = extras == 1;
  directory.content = reader.rest();
  ByteReader entry(entries.all());
  Group next;
  std::size_t previous = 0;
  std::uint64_t left = count;
  while (!entry.rest().empty()) {
    const std::uint64_t shared = entry.varint();
    const std::string_view suffix = entry.text();
    if (!entry.ok() || shared > directory.terms.size() - previous ||
        shared + suffix.size() > maximumTermSize) {
      return false;
    }
    const std::size_t begin = directory.terms.size();
    directory.terms.append(directory.terms.substr(previous, shared)).append(suffix);
    previous = begin;
    next.termEnd = directory.terms.size();
    directory.groups.push_back(next);
    const std::uint64_t size = entry.varint();
    // A term takes four numbers, so first terms that share bytes cannot claim much memory.
    const std::uint64_t terms = std::min<std::uint64_t>(termsPerGroup, left);
    left -= terms;
    const std::uint64_t postings = entry.varint();
    const std::uint64_t postingBytes = entry.varint();
    // No sum of so many overflows.
    constexpr std::uint64_t most = std::uint64_t{1} << 38U;
    if (!entry.ok() || terms == 0 || size < 4 * terms ||
        size > directory.content.size() - next.offset || postings > most || postingBytes > most) {
      return false;
    }
    next.offset += size;
    next.firstPosting += postings;
    next.postingsOffset += postingBytes;
  }
  directory.groups.push_back(next);
  return left == 0;
}

std::string_view TermDictionary::firstTerm(std::uint32_t group) const {
  const std::vector<Group>& groups = _directory->groups;
  const std::uint64_t begin = group == 0 ? 0 : groups[group - 1].termEnd;
  return std::string_view(_directory->terms).substr(begin, groups[group].termEnd - begin);
}

std::uint32_t TermDictionary::groupOf(std::string_view term) const {
  std::uint32_t low = 0;  // earlier groups start with a term not greater than `term`
  std::uint32_t high = groupCount();
  while (low < high) {
    const std::uint32_t middle = low + (high - low) / 2;
    if (firstTerm(middle) <= term) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low == 0 ? 0 : low - 1;
}

// cppcheck-suppress uninitMemberVar ; the bytes of a term are written before they are read
TermDictionary::Cursor::Cursor(const TermDictionary& dictionary, std::uint32_t id)
    : _dictionary(&dictionary), _next(id - id % termsPerGroup) {}

bool TermDictionary::Cursor::startGroup() {
  const Directory& directory = *_dictionary->_directory;
  const std::uint32_t number = _next / termsPerGroup;
  const Group& group = directory.groups[number];
  const Group& end = directory.groups[number + 1];
  ByteReader reader(directory.content.part(group.offset, end.offset - group.offset));
  const std::size_t terms = std::min(termsPerGroup, directory.count - _next);
  _numbers = reader.text();
  _extras = reader.bytes(directory.hasExtras ? terms : 0);
  _suffixes = reader.rest();
  _entry = {.firstPosting = group.firstPosting, .postingsOffset = group.postingsOffset};
  _postingsEnd = end.firstPosting;
  _bytesEnd = end.postingsOffset;
  const std::string_view first = _dictionary->firstTerm(number);
  std::ranges::copy(first, _term.begin());
  _termSize = first.size();
  return reader.ok();
}

bool TermDictionary::Cursor::fail() {
  _next = _dictionary->size();
  return false;
}

bool TermDictionary::Cursor::next() {
  if (_next >= _dictionary->size()) return false;
  if (_next % termsPerGroup == 0 && !startGroup()) return fail();
  ByteReader numbers(_numbers);
  const std::uint64_t shared = numbers.varint();
  const std::uint64_t suffixSize = numbers.varint();
  const std::uint32_t documentCount = numbers.varint32();
  const std::uint64_t extra = numbers.varint();
  if (!numbers.ok() || shared > _termSize || suffixSize > _suffixes.size() ||
      suffixSize > maximumTermSize - shared || extra > 9 * std::uint64_t{documentCount}) {
    return fail();
  }
  _numbers = numbers.rest();
  std::ranges::copy(_suffixes.substr(0, suffixSize), _term.begin() + shared);
  _termSize = shared + suffixSize;
  _suffixes.remove_prefix(suffixSize);
  _entry.firstPosting += _entry.documentCount;
  _entry.postingsOffset += _entry.postingsSize;
  _entry.documentCount = documentCount;
  _entry.postingsSize = documentCount + extra;
  // Postings of two groups that overlapped would be read once per term.
  if (_entry.firstPosting + documentCount > _postingsEnd ||
      _entry.postingsOffset + _entry.postingsSize > _bytesEnd) {
    return fail();
  }
  if (!_extras.empty()) {
    _entry.extra = static_cast<std::uint8_t>(_extras.front());
    _extras.remove_prefix(1);
  }
  _entry.id = _next++;
  return true;
}

bool TermDictionary::Cursor::seek(std::string_view term) {
  _next = _dictionary->groupOf(term) * termsPerGroup;
  while (next()) {
    if (this->term() >= term) return true;
  }
  return false;
}

std::optional<std::string> TermDictionary::term(std::uint32_t id) const {
  if (id >= size()) return std::nullopt;
  for (Cursor cursor(*this, id); cursor.next();) {
    if (cursor.id() == id) return std::string(cursor.term());
  }
  return std::nullopt;
}

std::optional<TermEntry> TermDictionary::find(std::string_view term) const {
  Cursor cursor(*this, 0);
  return cursor.seek(term) && cursor.term() == term ? std::optional(cursor.entry()) : std::nullopt;
}

}  // namespace quorvex
