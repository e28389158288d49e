// Asks an index file for the pages that answer best, and where in them: ask INDEX WORDS

#include <quorvex/quorvex.h>
#include <stdio.h>
#include <string.h>

static int fail(quorvex_error* error) {
  fprintf(stderr, "ask: %s\n", quorvex_error_message(error, NULL));
  quorvex_error_free(error);
  return 2;
}

// Prints a title, with the words that matched in brackets.
static void print_title(const quorvex_hit* hit) {
  const char* title = quorvex_page_title(quorvex_hit_page(hit), NULL);
  size_t count = 0;
  const quorvex_range* matches = quorvex_hit_title_matches(hit, &count);
  size_t printed = 0;
  for (size_t i = 0; i < count; ++i) {
    printf("%.*s[%.*s]", (int)(matches[i].begin - printed), title + printed,
           (int)(matches[i].end - matches[i].begin), title + matches[i].begin);
    printed = matches[i].end;
  }
  printf("%s\n", title + printed);
}

static int ask(const quorvex_index* index, const char* words) {
  quorvex_options* options = quorvex_options_new();
  quorvex_result* result = NULL;
  quorvex_error* error = NULL;
  quorvex_options_set_count(options, 5, NULL);
  const quorvex_code code =
      quorvex_index_search(index, words, strlen(words), options, &result, &error);
  quorvex_options_free(options);
  if (code != QUORVEX_OK) return fail(error);

  const size_t count = quorvex_result_hit_count(result);
  for (size_t i = 0; i < count; ++i) {
    const quorvex_hit* hit = quorvex_result_hit(result, i);
    printf("%s  ", quorvex_page_path(quorvex_hit_page(hit), NULL));
    print_title(hit);
    const quorvex_place* place = quorvex_hit_place(hit, 0);
    if (place != NULL) printf("  #%s\n", quorvex_place_fragment(place, NULL));
  }
  const char* suggestion = quorvex_result_suggestion(result, NULL);
  const char* searched = quorvex_result_searched(result, NULL);
  if (searched != NULL) {
    printf("Searched for: %s\n", searched);
  } else if (suggestion != NULL) {
    printf("Did you mean: %s\n", suggestion);
  }
  quorvex_result_free(result);
  return count > 0 ? 0 : 1;
}

int main(int count, char** arguments) {
  if (count != 3) return 2;
  quorvex_index* index = NULL;
  quorvex_error* error = NULL;
  if (quorvex_index_open(arguments[1], strlen(arguments[1]), &index, &error) != QUORVEX_OK) {
    return fail(error);
  }
  const int status = ask(index, arguments[2]);
  quorvex_index_close(index);
  return status;
}
