#pragma once

#include <memory>
#include <string>

#include "fulltext/format/analysis_section.h"
#include "fulltext/reading/index_reader.h"
#include "fulltext/writing/index_writer.h"

namespace quorvex {

/// An index being built or being read; neither once it is closed.
class TSIndex {
 public:
  IndexDescription description;
  std::shared_ptr<std::string> buffer;
  std::unique_ptr<IndexWriter> writer;
  std::shared_ptr<const IndexReader> reader;
};

}  // namespace quorvex
