// Build-time tool: lays an empty archive (db.mdb, indexes) into a folder unless there is one.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Failure.h"
#include "platform/LogicalPath.h"
#include "platform/Names.h"
#include "store/MessageIds.h"
#include "store/Template.h"

#include <QDir>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: lay_program_folder FOLDER\n", stderr);
        return 2;
    }
    const QString folder =
        QDir::cleanPath(QDir::current().absoluteFilePath(platform::DecodeName(argv[1])));
    try {
        velmora::CreateDatabase(platform::ToLogical(folder));
    } catch (const velmora::Error& error) {
        if (error.Number() != velmora::kDatabaseExists) {
            std::fprintf(stderr, "lay_program_folder: %s\n", error.what());
            return 1;
        }
    }
    return 0;
}
