#include "reader/page_texts.h"

#include <algorithm>
#include <utility>

namespace quorvex::reader {

namespace {

// Some screens of answers, and little beside what an open index takes.
constexpr std::size_t mostKept = 256;
constexpr std::size_t mostBytesKept = std::size_t{4} << 20U;

std::size_t bytesOf(const PageText& text) {
  return text.text.capacity() + text.blocks.capacity() * sizeof(text.blocks[0]);
}

}  // namespace

std::shared_ptr<const PageText> PageTexts::Page::whole() {
  return text({}, 0, [](const Data& html) { return textOfPage(html); });
}

std::shared_ptr<const PageText> PageTexts::Page::part(std::string_view fragment, std::size_t size) {
  return text(fragment, size, [&](const Data& html) {
    return fragment.empty() ? beginningOfPage(html, size) : textFromFragment(html, fragment, size);
  });
}

template <typename Parse>
std::shared_ptr<const PageText> PageTexts::Page::text(std::string_view fragment, std::size_t size,
                                                      const Parse& parse) {
  std::string key = std::to_string(size);
  key.append(1, '\0').append(fragment).append(1, '\0').append(_path);
  if (std::shared_ptr<const PageText> kept = _texts.find(key, _version)) return kept;
  if (!_html) _html = _texts._book->page(_path, _version.size);
  if (!_html) return nullptr;
  auto made = std::make_shared<const PageText>(parse(*_html));
  _texts.keep({std::move(key), _version, made});
  return made;
}

std::optional<PageTexts::Page> PageTexts::page(std::string_view path, std::size_t mostBytes) const {
  const std::optional<PageVersion> version = _book->version(path);
  if (!version || version->size > mostBytes) return std::nullopt;
  return Page(*this, path, *version);
}

std::shared_ptr<const PageText> PageTexts::find(std::string_view key,
                                                const PageVersion& version) const {
  const std::lock_guard lock(_mutex);
  const auto found = std::ranges::find(_kept, key, &Kept::key);
  if (found == _kept.end() || found->version != version) return nullptr;
  _kept.splice(_kept.begin(), _kept, found);
  return found->text;
}

void PageTexts::keep(Kept kept) const {
  const std::lock_guard lock(_mutex);
  // Another thread may have been as fast, or the page was another one.
  const auto same = std::ranges::find(_kept, kept.key, &Kept::key);
  if (same != _kept.end()) {
    _bytes -= bytesOf(*same->text);
    _kept.erase(same);
  }
  _bytes += bytesOf(*kept.text);
  _kept.push_front(std::move(kept));
  while (_kept.size() > mostKept || _bytes > mostBytesKept) {
    _bytes -= bytesOf(*_kept.back().text);
    _kept.pop_back();
  }
}

}  // namespace quorvex::reader
