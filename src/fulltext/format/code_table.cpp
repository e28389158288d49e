#include "fulltext/format/code_table.h"

#include <algorithm>
#include <functional>
#include <map>

#include "common/bytes.h"

namespace quorvex {

CodeTable::CodeTable(const LazyBytes& section) : _section(section) {
  const std::string_view bytes = section.all();
  ByteReader reader(bytes);
  std::uint64_t before = 0;
  std::uint64_t count = 0;
  while (!reader.rest().empty()) {
    const std::uint64_t step = reader.varint();
    count = _classes.empty() ? step : count - step;
    const std::uint64_t terms = reader.varint();
    const std::uint64_t size = reader.varint();
    const std::size_t begin = bytes.size() - reader.rest().size();
    reader.bytes(size);
    const bool fits = count <= UINT32_MAX && terms <= UINT32_MAX && before <= UINT32_MAX;
    if (!reader.ok() || !fits) {
      _classes.clear();
      return;
    }
    _classes.push_back({static_cast<std::uint32_t>(count), static_cast<std::uint32_t>(before),
                        begin, begin + static_cast<std::size_t>(size)});
    before += terms;
  }
}

std::uint32_t CodeTable::code(const TermEntry& term, const TermDictionary& terms) const {
  const auto found =
      std::ranges::lower_bound(_classes, term.documentCount, std::greater(), &CountClass::count);
  if (found == _classes.end() || found->count != term.documentCount) return 0;
  std::uint64_t code = found->termsBefore;
  const std::uint32_t own = term.id / termsPerGroup;
  std::uint64_t group = 0;
  ByteReader reader(_section.part(found->begin, found->end - found->begin));
  while (!reader.rest().empty()) {
    group += reader.varint();
    if (group >= own) break;
    code += reader.varint();
    ++group;
  }
  TermDictionary::Cursor cursor(terms, term.id);
  while (cursor.next() && cursor.id() <= term.id)
    code += cursor.entry().documentCount == term.documentCount ? 1U : 0U;
  return reader.ok() && code <= terms.size() ? static_cast<std::uint32_t>(code) : 0;
}

std::string encodeCodes(const std::vector<std::uint32_t>& documentCounts) {
  struct Groups {
    std::uint32_t terms = 0;
    std::string bytes;
    std::uint32_t last = 0;
    std::uint32_t inLast = 0;
    std::uint32_t next = 0;  ///< behind the last one written

    void finish() {
      if (inLast == 0) return;
      appendVarint(bytes, last - next);
      appendVarint(bytes, inLast);
      next = last + 1;
      inLast = 0;
    }
  };
  std::map<std::uint32_t, Groups, std::greater<>> classes;
  for (std::uint32_t id = 0; id < documentCounts.size(); ++id) {
    Groups& groups = classes[documentCounts[id]];
    if (groups.last != id / termsPerGroup) groups.finish();
    groups.last = id / termsPerGroup;
    ++groups.inLast;
    ++groups.terms;
  }
  std::string out;
  std::uint32_t previous = 0;
  for (auto& [count, groups] : classes) {
    groups.finish();
    appendVarint(out, out.empty() ? count : previous - count);
    appendVarint(out, groups.terms);
    appendText(out, groups.bytes);
    previous = count;
  }
  return out;
}

}  // namespace quorvex
