// The functions of the public header that read pages, lists, matches and results. None of them can
// fail.

#include "quorvex/quorvex.h"
#include "reader/answers.h"
#include "reader/handle_values.h"

using namespace quorvex::reader;

// ---- Pages

void quorvex_page_free(quorvex_page* page) {
  delete page;
}

const char* quorvex_page_path(const quorvex_page* page, size_t* length) {
  return given(orEmpty(page).path, length);
}

const char* quorvex_page_first_anchor(const quorvex_page* page, size_t* length) {
  return given(orEmpty(page).firstAnchor, length);
}

const char* quorvex_page_title(const quorvex_page* page, size_t* length) {
  return given(orEmpty(page).title, length);
}

const char* quorvex_page_description(const quorvex_page* page, size_t* length) {
  return given(orEmpty(page).description, length);
}

// ---- Lists

size_t quorvex_list_count(const quorvex_list* list) {
  return orEmpty(list).texts.size();
}

const char* quorvex_list_at(const quorvex_list* list, size_t number, size_t* length) {
  if (number >= quorvex_list_count(list)) return given(std::nullopt, length);
  return given(list->texts[number], length);
}

void quorvex_list_free(quorvex_list* list) {
  delete list;
}

// ---- Matches

void quorvex_matches_free(quorvex_matches* matches) {
  delete matches;
}

const quorvex_range* quorvex_matches_ranges(const quorvex_matches* matches, size_t* count) {
  return given(orEmpty(matches).ranges, count);
}

// ---- Results

void quorvex_result_free(quorvex_result* result) {
  delete result;
}

quorvex_state quorvex_result_state(const quorvex_result* result) {
  return orEmpty(result).state;
}

const char* quorvex_result_suggestion(const quorvex_result* result, size_t* length) {
  return given(orEmpty(result).suggestion, length);
}

const char* quorvex_result_searched(const quorvex_result* result, size_t* length) {
  return given(orEmpty(result).searched, length);
}

const quorvex_list* quorvex_result_explanation(const quorvex_result* result) {
  return result == nullptr ? nullptr : &result->explanation;
}

size_t quorvex_result_hit_count(const quorvex_result* result) {
  return orEmpty(result).hits.size();
}

const quorvex_hit* quorvex_result_hit(const quorvex_result* result, size_t number) {
  return number < quorvex_result_hit_count(result) ? &result->hits[number] : nullptr;
}

const quorvex_page* quorvex_hit_page(const quorvex_hit* hit) {
  return hit == nullptr ? nullptr : &hit->page;
}

size_t quorvex_hit_index(const quorvex_hit* hit) {
  return orEmpty(hit).index;
}

double quorvex_hit_score(const quorvex_hit* hit) {
  return orEmpty(hit).score;
}

size_t quorvex_hit_part_count(const quorvex_hit* hit) {
  return orEmpty(hit).parts.size();
}

const char* quorvex_hit_part_name(const quorvex_hit* hit, size_t number, size_t* length) {
  if (number >= quorvex_hit_part_count(hit)) return given(std::nullopt, length);
  return given(hit->parts[number].name, length);
}

double quorvex_hit_part_value(const quorvex_hit* hit, size_t number) {
  return number < quorvex_hit_part_count(hit) ? hit->parts[number].value : 0;
}

const quorvex_range* quorvex_hit_title_matches(const quorvex_hit* hit, size_t* count) {
  return given(orEmpty(hit).titleMatches, count);
}

const quorvex_range* quorvex_hit_description_matches(const quorvex_hit* hit, size_t* count) {
  return given(orEmpty(hit).descriptionMatches, count);
}

size_t quorvex_hit_place_count(const quorvex_hit* hit) {
  return orEmpty(hit).places.size();
}

const quorvex_place* quorvex_hit_place(const quorvex_hit* hit, size_t number) {
  return number < quorvex_hit_place_count(hit) ? &hit->places[number] : nullptr;
}

const char* quorvex_place_fragment(const quorvex_place* place, size_t* length) {
  return given(orEmpty(place).fragment, length);
}

const quorvex_list* quorvex_place_headings(const quorvex_place* place) {
  return place == nullptr ? nullptr : &place->headings;
}

double quorvex_place_score(const quorvex_place* place) {
  return orEmpty(place).score;
}

const char* quorvex_place_snippet(const quorvex_place* place, size_t* length) {
  return given(orEmpty(place).snippet, length);
}

const quorvex_range* quorvex_place_snippet_matches(const quorvex_place* place, size_t* count) {
  return given(orEmpty(place).snippetMatches, count);
}

const char* quorvex_hit_name(const quorvex_hit* hit, size_t* length) {
  return given(orEmpty(hit).name, length);
}
