// The second program on one archive: adds rows, counts in one row, or moves documents for ever.
//   store_test_helper FOLDER add COUNT NAME | count COUNT | move
// With STORE_ON_A_SHARE in its environment it takes the archive's disk for a share.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Globals.h"
#include "platform/LogicalPath.h"
#include "store/ModDb.h"
#include "store/StoreError.h"
#include "tests/platform/PretendedShare.h"

#include <cstdio>
#include <iostream>
#include <optional>
#include <string>

using namespace velmora;

namespace {

void Say(const char* word) {
    std::puts(word);
    std::fflush(stdout);
}

void AddRows(int count, const QString& name) {
    for (int i = 0; i < count; ++i) {
        RecordSetPtr rs = GetRsIdxdFolders();
        rs->AddNew();
        rs->Fields(u"sdescr").SetValue(name + QString::number(i));
        rs->Fields(u"suser").SetValue(Program().gUserKey);
        rs->UpdateBatch();
    }
}

// Adds one to the number in the first row, again and again; reads anew when the other was faster.
// Tells "read" when it has read and waits for a line before it writes.
void CountUp(int count) {
    for (int done = 0; done < count;) {
        RecordSetPtr rs = GetRsIdxdFolders();
        rs->Fields(u"sdescr").SetValue(rs->Fields(u"sdescr").Text().toInt() + 1);
        Say("read");
        std::string go;
        std::getline(std::cin, go);
        try {
            rs->UpdateBatch();
            ++done;
        } catch (const Error& error) {
            if (error.Number() != kRecordChanged) {
                throw;
            }
        }
    }
}

[[noreturn]] void MoveForEver() {
    const QString places[] = {QStringLiteral("\\A"), QStringLiteral("\\B")};
    for (int i = 0;; ++i) {
        DbMoveFile(places[i % 2], places[(i + 1) % 2], true);
        Say("moved");
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        return 2;
    }
    Program().gArchivePath = platform::ToLogical(QString::fromLocal8Bit(argv[1]));
    Program().gUserKey = QStringLiteral("SHARED");
    Store().busyWait = std::chrono::minutes(2);
    std::optional<platform_test::PretendedShare> share;
    if (qEnvironmentVariableIsSet("STORE_ON_A_SHARE")) {
        share.emplace();
    }
    const std::string_view task = argv[2];
    try {
        if (task == "add" && argc == 5) {
            AddRows(std::atoi(argv[3]), QString::fromLocal8Bit(argv[4]));
        } else if (task == "count" && argc == 4) {
            CountUp(std::atoi(argv[3]));
        } else if (task == "move") {
            MoveForEver();
        } else {
            return 2;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
