// Makes any number of small documents out of the lines of real texts, the same ones each time.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int kPerFolder = 500;
constexpr std::size_t kRun = 1300; // bytes taken from one place, to the next line's end
constexpr int kRuns = 2;           // places a document is made of

// What a reader would see of a page: no tags, nothing between those of scripts and styles.
std::string WithoutTags(std::string_view html) {
    std::string text;
    for (std::size_t at = 0; at < html.size();) {
        const std::size_t tag = std::min(html.find('<', at), html.size());
        text += html.substr(at, tag - at);
        std::string_view close = ">";
        if (html.substr(tag).starts_with("<script"))
            close = "</script>";
        else if (html.substr(tag).starts_with("<style"))
            close = "</style>";
        const std::size_t end = html.find(close, tag);
        at = end == std::string_view::npos ? html.size() : end + close.size();
    }
    return text;
}

std::string ReadAll(const fs::path& top) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(top))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::string all;
    for (const fs::path& path : files) {
        std::ifstream file(path, std::ios::binary);
        const std::string content(std::istreambuf_iterator<char>(file), {});
        all += path.extension() == ".html" ? WithoutTags(content) : content;
        all += '\n';
    }
    return all;
}

// Whole lines from somewhere in the text.
std::string_view SomeLines(std::string_view text, std::mt19937_64& random) {
    const std::size_t last = text.size() - 2 * kRun;
    const std::size_t begin = text.find('\n', std::uniform_int_distribution<std::size_t>(0, last)(random)) + 1;
    const std::size_t end = text.find('\n', std::min(begin + kRun, text.size() - 1));
    return text.substr(begin, end == std::string_view::npos ? std::string_view::npos : end + 1 - begin);
}

} // namespace

// make_documents TEXTFOLDER FOLDER COUNT [FIRST]
int main(int argc, char** argv) {
    if (argc < 4)
        return 2;
    const std::string text = ReadAll(argv[1]);
    const fs::path top = argv[2];
    const int count = std::atoi(argv[3]);
    const int first = argc > 4 ? std::atoi(argv[4]) : 0;
    if (text.size() < 10 * kRun) {
        std::fprintf(stderr, "%s: too little text\n", argv[1]);
        return 1;
    }
    for (int i = first; i < first + count; ++i) {
        std::mt19937_64 random(static_cast<std::uint64_t>(i) * 2654435761U + 1);
        char name[32];
        std::snprintf(name, sizeof name, "%04d/%07d.txt", i / kPerFolder, i);
        const fs::path path = top / name;
        if (i % kPerFolder == 0 || i == first)
            fs::create_directories(path.parent_path());
        std::ofstream file(path, std::ios::binary);
        file << "Document " << i << "\n\n";
        for (int run = 0; run < kRuns; ++run)
            file << SomeLines(text, random);
        if (!file.flush()) {
            std::perror(path.c_str());
            return 1;
        }
    }
}
