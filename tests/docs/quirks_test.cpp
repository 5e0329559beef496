// SPDX-License-Identifier: Apache-2.0
//
// docs/quirks.md, the sources and the tests name the same quirks.
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace mdm::test::quirks_test {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

bool contains(const Names &names, const std::string &name)
{
    return std::ranges::find(names, name) != names.end();
}

// The matches of the expression's first group, in order.
Names all_of(const std::string &text, const std::regex &regex)
{
    Names matches;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
        matches.push_back((*match)[1]);
    }
    return matches;
}

Names ids_in(const std::string &text)
{
    static const std::regex id("\\b(Q-[A-Z_]+-[0-9]+)\\b");
    return text.find("Q-") == std::string::npos ? Names{} : all_of(text, id);
}

struct File {
    std::string name;  // from the project's directory on
    Names lines;
};

std::vector<File> files_below(const char *directory)
{
    const fs::path project = fs::path(MDM_DOCS_DIR).parent_path();
    std::vector<File> files;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(project / directory)) {
        static const Names extensions = {".cpp", ".hpp", ".c", ".h", ".md"};
        if (!entry.is_regular_file() || !contains(extensions, entry.path().extension())) {
            continue;
        }
        File &file = files.emplace_back(File{fs::relative(entry.path(), project), {}});
        std::ifstream stream(entry.path());
        for (std::string line; std::getline(stream, line);) {
            file.lines.push_back(line);
        }
    }
    EXPECT_FALSE(files.empty()) << directory;
    return files;
}

// An entry of the list: "- **ID** What happens. In `FILE`: `FUNCTION`. Test: `SUITE.NAME`."
struct Entry {
    std::string id;
    std::string text;

    Names places() const { return quoted(" In `", tests_begin()); }
    Names tests() const { return quoted(" Test: `", text.size()); }

private:
    size_t tests_begin() const { return text.rfind(" Test: `"); }

    // The texts in backquotes, from the word that begins the part to the part's end.
    Names quoted(const char *word, size_t end) const
    {
        const size_t begin = text.rfind(word, end);
        if (begin == std::string::npos || end == std::string::npos) {
            ADD_FAILURE() << id << " has no part \"" << word << "\"";
            return {};
        }
        static const std::regex quotation("`([^`]+)`");
        return all_of(text.substr(begin, end - begin), quotation);
    }
};

std::vector<Entry> listed_entries()
{
    std::vector<Entry> entries;
    std::ifstream list(MDM_DOCS_DIR "/quirks.md");
    bool is_inside = false;
    for (std::string line; std::getline(list, line);) {
        if (line.starts_with("- **Q-")) {
            entries.push_back({ids_in(line).front(), line});
            is_inside = true;
        } else if (line.starts_with("  ") && is_inside) {
            entries.back().text += line.substr(1);
        } else {
            is_inside = false;
        }
    }
    EXPECT_FALSE(entries.empty());
    return entries;
}

// The tests by their names, with the ids that they are marked with.
std::map<std::string, Names> marked_tests()
{
    const std::regex mark("// Q-[A-Z_]+-[0-9]+(, Q-[A-Z_]+-[0-9]+)*");
    const std::regex test(R"((?:TYPED_)?TEST(?:_F|_P)?\((\w+), *(\w+)\))");
    std::map<std::string, Names> tests;
    for (const File &file : files_below("tests")) {
        Names ids;
        for (const std::string &line : file.lines) {
            std::smatch match;
            if (line.starts_with("// Q-") && std::regex_match(line, mark)) {
                ids = ids_in(line);
            } else if (line.find("TEST") != std::string::npos &&
                       std::regex_match(line, match, test)) {
                tests[match.str(1) + "." + match.str(2)] = ids;
                ids.clear();
            } else {
                EXPECT_TRUE(ids.empty())
                    << ids.front() << " in " << file.name << " is not directly above a test";
                ids.clear();
            }
        }
    }
    return tests;
}

TEST(Quirks, HaveOneEntryEach)
{
    std::set<std::string> ids;
    for (const Entry &entry : listed_entries()) {
        EXPECT_TRUE(ids.insert(entry.id).second) << entry.id << " is listed twice";
    }
    for (const char *directory : {"src", "include", "docs", "tests"}) {
        for (const File &file : files_below(directory)) {
            for (const std::string &line : file.lines) {
                for (const std::string &id : ids_in(line)) {
                    EXPECT_TRUE(ids.contains(id)) << id << " in " << file.name << " is not listed";
                }
            }
        }
    }
}

struct Source {
    std::string text;
    Names ids;
};

// The sources by their names without a directory.
std::map<std::string, Source> named_sources()
{
    std::map<std::string, Source> sources;
    for (const File &file : files_below("src")) {
        const auto [place, is_new] = sources.try_emplace(fs::path(file.name).filename());
        EXPECT_TRUE(is_new) << "two sources have the name of " << file.name;
        Source &source = place->second;
        for (const std::string &line : file.lines) {
            source.text += line + '\n';
            for (const std::string &id : ids_in(line)) {
                source.ids.push_back(id);
            }
        }
    }
    return sources;
}

// "Writer::count()" is found by "count".
std::string last_name(const std::string &function)
{
    static const std::regex name("([A-Za-z_0-9]+)");
    const Names names = all_of(function, name);
    return names.empty() ? function : names.back();
}

bool has_word(const std::string &text, const std::string &word)
{
    const auto is_part_of_word = [&text](size_t place) {
        return place < text.size() && (std::isalnum(text[place]) != 0 || text[place] == '_');
    };
    for (size_t place = text.find(word); place != std::string::npos;
         place = text.find(word, place + 1)) {
        if (!is_part_of_word(place - 1) && !is_part_of_word(place + word.size())) {
            return true;
        }
    }
    return false;
}

TEST(Quirks, ActWhereTheListSays)
{
    std::map<std::string, Source> sources = named_sources();
    std::map<std::string, Names> listed;  // the ids by the sources that the list names for them
    for (const Entry &entry : listed_entries()) {
        std::string file;
        for (const std::string &place : entry.places()) {
            if (place.ends_with(".cpp") || place.ends_with(".hpp")) {
                file = place;
                listed[file].push_back(entry.id);
                EXPECT_TRUE(contains(sources[file].ids, entry.id))
                    << entry.id << " has no comment in " << file;
            } else {
                EXPECT_TRUE(has_word(sources[file].text, last_name(place)))
                    << entry.id << ": there is no " << place << " in " << file;
            }
        }
        EXPECT_FALSE(file.empty()) << entry.id << " names no source";
    }
    for (const auto &[name, source] : sources) {
        for (const std::string &id : source.ids) {
            EXPECT_TRUE(contains(listed[name], id))
                << id << " is in " << name << ", which the list does not name for it";
        }
    }
}

TEST(Quirks, HaveTheTestsThatTheListNames)
{
    const std::map<std::string, Names> tests = marked_tests();
    std::map<std::string, Names> listed;  // the ids by the tests that the list names for them
    for (const Entry &entry : listed_entries()) {
        const Names names = entry.tests();
        EXPECT_FALSE(names.empty()) << entry.id << " names no test";
        for (const std::string &name : names) {
            listed[name].push_back(entry.id);
            const auto test = tests.find(name);
            EXPECT_NE(test, tests.end()) << entry.id << ": there is no test " << name;
            EXPECT_TRUE(test == tests.end() || contains(test->second, entry.id))
                << entry.id << " is not marked above " << name;
        }
    }
    for (const auto &[name, ids] : tests) {
        for (const std::string &id : ids) {
            EXPECT_TRUE(contains(listed[name], id))
                << id << " is marked above " << name << ", which the list does not name";
        }
    }
}

}  // namespace
}  // namespace mdm::test::quirks_test
