#include "text/chinese_variants.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <unicode/localpointer.h>
#include <unicode/ures.h>
#include <unicode/utypes.h>

namespace quorvex {

namespace {

bool isHan(char16_t character) {
  return character >= firstHan && character < endOfHan;
}

/// A rule such as "x<->y;" or "x<-y;": y is also written as x.
void apply(std::u16string_view rule, SimplifiedHan& simplified) {
  constexpr char16_t fromRight = u'\u2190';
  constexpr char16_t bothWays = u'\u2194';
  if (rule.size() != 3 || (rule[1] != fromRight && rule[1] != bothWays)) return;
  if (isHan(rule[0]) && isHan(rule[2])) simplified[rule[2] - firstHan] = rule[0];
}

void apply(UResourceBundle* rules, SimplifiedHan& simplified) {
  std::int32_t size = 0;
  UErrorCode status = U_ZERO_ERROR;
  const UChar* const text = ures_getStringByKey(rules, "resource", &size, &status);
  if (U_FAILURE(status) || size < 0) return;
  std::u16string_view rest(text, static_cast<std::size_t>(size));
  while (!rest.empty()) {
    const std::size_t end = rest.find(u';');
    apply(rest.substr(0, end), simplified);
    rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
  }
}

SimplifiedHan readVariants() {
  SimplifiedHan simplified;
  for (char32_t character = firstHan; character < endOfHan; ++character)
    simplified[character - firstHan] = static_cast<char16_t>(character);
  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalUResourceBundlePointer root(
      ures_openDirect(U_ICUDATA_NAME "-translit", "root", &status));
  const icu::LocalUResourceBundlePointer all(
      ures_getByKey(root.getAlias(), "RuleBasedTransliteratorIDs", nullptr, &status));
  const icu::LocalUResourceBundlePointer one(
      ures_getByKey(all.getAlias(), "Hant-Hans", nullptr, &status));
  const icu::LocalUResourceBundlePointer rules(
      ures_getByKey(one.getAlias(), "file", nullptr, &status));
  if (U_SUCCESS(status)) apply(rules.getAlias(), simplified);
  // A few simplified forms are simplified further.
  for (char16_t& form : simplified)
    form = simplified[form - firstHan];
  return simplified;
}

}  // namespace

const SimplifiedHan& simplifiedHan() {
  static const SimplifiedHan simplified = readVariants();
  return simplified;
}

}  // namespace quorvex
