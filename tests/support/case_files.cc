// Reads and writes pages of cases.
#include "tests/support/case_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>

namespace orsa::kesncd {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongRun = 64;  // a byte that stands so often is written with its number

struct Page {
  fs::path path;
  std::string head;
  std::vector<Case> cases;
};

/// A text as its page means it.
std::string Meant(const std::string& text) {
  static const std::regex kMark("<([0-9A-F]{2})>|<([0-9]+)\\*([^\n>]+)>|<>\n");
  std::string meant;
  std::size_t at = 0;
  for (std::sregex_iterator mark(text.begin(), text.end(), kMark), end; mark != end; ++mark) {
    meant.append(text, at, static_cast<std::size_t>(mark->position()) - at);
    at = static_cast<std::size_t>(mark->position() + mark->length());
    if ((*mark)[1].matched) meant += static_cast<char>(std::stoi((*mark)[1], nullptr, 16));
    if (!(*mark)[2].matched) continue;
    for (int times = std::stoi((*mark)[2]); times > 0; --times) meant += (*mark)[3];
  }
  return meant.append(text, at);
}

/// A text as a page holds it.
std::string Written(const std::string& text) {
  std::string written;
  for (std::size_t at = 0, end = 0; at < text.size(); at = end) {
    const char byte = text[at];
    end = std::min(text.find_first_not_of(byte, at), text.size());
    if ((byte >= 0 && byte < ' ' && byte != '\n' && byte != '\t') || byte == '\x7F') {
      char mark[8];
      std::snprintf(mark, sizeof mark, "<%02X>", static_cast<unsigned>(byte));
      written += mark;
      end = at + 1;
    } else if (end - at >= kLongRun) {
      written += "<" + std::to_string(end - at) + "*" + byte + ">";
    } else {
      written.append(text, at, end - at);
    }
  }
  return text.empty() || text.back() == '\n' ? written : written + "<>\n";
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The dump of a case's lines: what follows its name and its reasons.
std::string DumpOf(const std::string& head) {
  std::size_t begin = head.find('\n') + 1;
  while (head.compare(begin, 2, "# ") == 0) begin = head.find('\n', begin) + 1;
  return Meant(head.substr(begin));
}

Page ReadPage(const fs::path& path) {
  Page page{path, {}, {}};
  const std::string text = ReadFile(path);
  std::string* into = &page.head;
  for (std::size_t at = 0, end = 0; at < text.size(); at = end) {
    end = std::min(text.find('\n', at), text.size() - 1) + 1;
    const std::string line = text.substr(at, end - at);
    if (line.starts_with("=== ")) {
      page.cases.push_back({line.substr(4, line.size() - 5), {}, {}, line});
      into = &page.cases.back().head;
    } else if (line.starts_with("--- ") && !page.cases.empty()) {
      page.cases.back().results.push_back({line.substr(4, line.size() - 5), {}});
      into = &page.cases.back().results.back().text;
    } else {
      *into += line;
    }
  }
  for (Case& of : page.cases) {
    of.dump = DumpOf(of.head);
    for (Case::Result& result : of.results) result.text = Meant(result.text);
  }
  return page;
}

void WritePage(const Page& page) {
  std::ofstream file(page.path, std::ios::binary);
  file << page.head;
  for (const Case& of : page.cases) {
    file << of.head;
    for (const Case::Result& result : of.results) {
      file << "--- " << result.title << "\n" << Written(result.text);
    }
  }
}

std::vector<Page> PagesIn(const std::string& path) {
  const fs::path place = fs::path(KESNCD_TEST_SOURCE) / path;
  std::vector<fs::path> paths;
  if (fs::is_directory(place)) {
    for (const auto& entry : fs::directory_iterator(place)) paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
  } else {
    paths.push_back(place);
  }
  std::vector<Page> pages;
  for (const fs::path& page : paths) pages.push_back(ReadPage(page));
  return pages;
}

}  // namespace

std::string Case::TextOf(const std::string& title) const {
  for (const Result& result : results) {
    if (result.title == title) return result.text;
  }
  return {};
}

bool Case::Has(const std::string& title) const {
  return std::any_of(results.begin(), results.end(),
                     [&](const Result& result) { return result.title == title; });
}

std::vector<Case> CasesIn(const std::string& path) {
  std::vector<Case> cases;
  for (Page& page : PagesIn(path)) {
    std::move(page.cases.begin(), page.cases.end(), std::back_inserter(cases));
  }
  EXPECT_FALSE(cases.empty()) << path;
  return cases;
}

Case CaseIn(const std::string& path, const std::string& name) {
  for (Case& of : CasesIn(path)) {
    if (of.name == name) return std::move(of);
  }
  ADD_FAILURE() << path << " has no case " << name;
  return {};
}

void ExpectCases(const std::string& path, const MadeOf& made) {
  const bool isUpdate = std::getenv("KESNCD_UPDATE_CASES") != nullptr;
  std::size_t results = 0;
  for (Page& page : PagesIn(path)) {
    for (Case& of : page.cases) {
      SCOPED_TRACE(page.path.string() + ": " + of.name);
      EXPECT_FALSE(of.results.empty());
      for (Case::Result& result : of.results) {
        const std::optional<std::string> text = made(of, result.title);
        if (!text) continue;
        ++results;
        if (!isUpdate) {
          EXPECT_EQ(*text, result.text) << result.title;
        }
        result.text = *text;
      }
    }
    if (isUpdate) WritePage(page);
  }
  EXPECT_GT(results, 0U) << path;
}

}  // namespace orsa::kesncd
