// Golden checksums: deterministic renders pinned by checksum in a text file
// under tests/data/golden/, one "name checksum" line per case. Rewriting a
// file is always deliberate: TESS_REGENERATE_GOLDEN=1 (which the
// regenerate-golden target sets) makes Verify() write the actual checksums as
// the new expected file. A mismatch writes them to <stem>.actual.txt in the
// test's working folder instead, and the failure message says where.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "image/image.h"

namespace tess::testing {

// 64-bit FNV-1a.
uint64_t Fnv1a64(const uint8_t* data, size_t size);

// Over the whole packed image (header, colour table and rows), so a change of
// size or depth changes it too. 0 for a null image.
uint64_t ImageChecksum(const ImageBlock& image);

class GoldenSet {
 public:
  // `stem` names tests/data/golden/<stem>.txt.
  explicit GoldenSet(std::string stem) : m_stem(std::move(stem)) {}

  // Case names are single words (no blanks); each is added once.
  void Add(std::string name, uint64_t checksum);

  // Compares every added case with the expected file, and fails on a
  // difference, a missing case or an expected case that was not added.
  ::testing::AssertionResult Verify() const;

  std::string ExpectedPath() const;
  std::string ActualPath() const;

 private:
  std::string m_stem;
  std::vector<std::pair<std::string, uint64_t>> m_cases;
};

}  // namespace tess::testing
