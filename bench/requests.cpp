// Times requests of every kind in process, drawn from the words of the indexed text itself.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/SearchJob.h"
#include "engine/WordList.h"
#include "engine/text/Tokenizer.h"
#include "platform/LogicalPath.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

struct Kind {
    const char* name;
    int share; // of 100 requests
    std::function<std::string(std::mt19937&, const std::vector<Words>&)> make;
};

std::size_t Pick(std::mt19937& random, std::size_t count) {
    return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
}

// Words as they come in running text, the commonest most often, in quotes against operators.
std::string Word(std::mt19937& random, const std::vector<Words>& documents) {
    const Words& words = documents[Pick(random, documents.size())];
    return "\"" + words[Pick(random, words.size())] + "\"";
}

std::string Phrase(std::mt19937& random, const std::vector<Words>& documents) {
    const Words& words = documents[Pick(random, documents.size())];
    const std::size_t first = Pick(random, words.size() - 2);
    return "\"" + words[first] + " " + words[first + 1] + " " + words[first + 2] + "\"";
}

std::string Start(std::mt19937& random, const std::vector<Words>& documents) {
    for (;;) {
        const Words& words = documents[Pick(random, documents.size())];
        const std::string& word = words[Pick(random, words.size())];
        if (word.size() >= 6)
            return word.substr(0, 5) + "*";
    }
}

std::vector<Kind> Kinds() {
    const auto pair = [](const char* op) {
        return [op](std::mt19937& random, const std::vector<Words>& documents) {
            return Word(random, documents) + op + Word(random, documents);
        };
    };
    return {{"word", 40, &Word},
            {"and", 20, pair(" and ")},
            {"phrase", 15, &Phrase},
            {"w/10", 10, pair(" w/10 ")},
            {"or", 5, pair(" or ")},
            {"and not", 5, pair(" and not ")},
            {"beginning", 5, &Start}};
}

std::vector<Words> ReadDocuments(const QString& folder, int count, std::mt19937& random) {
    QStringList files;
    QDirIterator walk(folder, QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext())
        files << walk.next();
    std::sort(files.begin(), files.end());
    engine::Tokenizer tokenizer;
    std::vector<Words> documents;
    while (static_cast<int>(documents.size()) < count) {
        QFile file(files[static_cast<qsizetype>(Pick(random, static_cast<std::size_t>(files.size())))]);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        Words words;
        for (const engine::Word& word : tokenizer.Split(file.read(200'000).toStdString()))
            if (word.term.size() < 30)
                words.emplace_back(word.term);
        if (words.size() > 10)
            documents.push_back(std::move(words));
    }
    return documents;
}

double Percentile(std::vector<double> times, double share) {
    std::sort(times.begin(), times.end());
    return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
}

void Print(const char* name, const std::vector<double>& times) {
    std::printf("%-12s %5zu requests  median %7.2f ms  95%% %7.2f ms  worst %7.2f ms\n", name,
                times.size(), Percentile(times, 0.5), Percentile(times, 0.95), Percentile(times, 1.0));
}

} // namespace

// bench_requests INDEXFOLDER TEXTFOLDER [COUNT]
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc < 3)
        return 2;
    const QString index = platform::ToLogical(QFile::decodeName(argv[1]));
    const int count = argc > 3 ? std::atoi(argv[3]) : 1000;
    std::mt19937 random(1);
    const std::vector<Words> documents = ReadDocuments(QFile::decodeName(argv[2]), 500, random);
    std::map<std::string, std::vector<double>> byKind;
    std::vector<double> all;
    std::vector<double> lists;
    std::size_t under50 = 0;
    for (const Kind& kind : Kinds())
        for (int i = 0; i < count * kind.share / 100; ++i) {
            engine::SearchJob job;
            job.IndexPath = index;
            job.Request = QString::fromStdString(kind.make(random, documents));
            QElapsedTimer timer;
            timer.start();
            const engine::SearchResults results = job.Execute();
            const double time = static_cast<double>(timer.nsecsElapsed()) / 1e6;
            if (results.fault) {
                std::fprintf(stderr, "%s: %s\n", qPrintable(job.Request), qPrintable(results.faultText));
                return 1;
            }
            byKind[kind.name].push_back(time);
            all.push_back(time);
            under50 += time < 50 ? 1 : 0;
            if (qEnvironmentVariableIsSet("BENCH_VERBOSE"))
                std::printf("%8.2f ms %7llu found  %s\n", time,
                            static_cast<unsigned long long>(results.found), qPrintable(job.Request));
        }
    for (int i = 0; i < 200; ++i) {
        const std::string word = Word(random, documents);
        QElapsedTimer timer;
        timer.start();
        engine::WordListBuilder builder;
        if (builder.OpenIndex(index, {}))
            builder.ListWords(QString::fromStdString(word.substr(1, 3)), 5);
        lists.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    for (const auto& [name, times] : byKind)
        Print(name.c_str(), times);
    Print("all", all);
    std::printf("under 50 ms: %.1f of 100\n", 100.0 * static_cast<double>(under50) / static_cast<double>(all.size()));
    Print("word list", lists);
}
