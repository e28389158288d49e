#pragma once

#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::test {

/// A page of random tags and texts, badly nested more often than not, so that the parser opens and
/// closes many elements itself.
inline std::string randomPage(std::mt19937& random) {
  static constexpr std::string_view stock =
      R"(<html lang=x>|<html a=b checked>|<html>|</html>|<head>
<title>|<title>t|</title>|<body id=y>|<body id=B>|</body>|<div>|</div>|<p>|</p>|<p id=z id=z>
<a b c=''>|<a href='help:x'>|<a name=n id=i href=y>|<a id='' name=n>|<a href>|</a>|<b id=x>|</b>
<a xmlns='u' href='x:y'>|<svg:a id=s>|<x:y z:w=1>|<b><i></b>|<option selected>|<select>|<td nowrap>
<table>|<table><tr><td>|</table>|<textarea><a id=in>|<script>|</script>|<style>x<y</style>
<script>if (a < b) help:</script>|<!-- c -->|<?pi d?>|<?e>|<!DOCTYPE html>|]]>|<|</|<!
<meta name=ROBOTS content=noindex>|<meta name=keyWords content=c content=d>|<meta name=Description>
<p class=c role=search title=t>|<a class=c href='x-help-action'>|<h2 id=h>|<dl><dt id=d>|<dd>
<html class=c lang=en-GB>|<meta name=robotsx content=e>|<meta content=z>|text |&amp;&x;|&nosuch;|&nbsp;|é)";
  static const std::vector<std::string> pieces = [] {
    std::vector<std::string> all = {"\n", "\n  "};
    for (std::string_view rest = stock; !rest.empty();) {
      const std::size_t end = std::min(rest.find_first_of("|\n"), rest.size());
      all.emplace_back(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return all;
  }();
  std::string page;
  for (auto left = random() % 60; left > 0; --left)
    page += pieces[random() % pieces.size()];
  return page;
}

}  // namespace quorvex::test
