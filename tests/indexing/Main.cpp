// Runs the tests on a machine of their own, with the worker of this build.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/CommonFunctions.h"
#include "tests/indexing/IndexingFixture.h"

#include <QCoreApplication>
#include <gmock/gmock.h>
#ifdef QT_WIDGETS_LIB
#include <QApplication>
#endif

namespace velmora {

Place& ThePlace() {
    static Place place;
    return place;
}

QString RememberingView::GetTemporaryFolder() {
    return platform::WithoutBackslash(GetTmpPath());
}

} // namespace velmora

int main(int argc, char** argv) {
    velmora::ThePlace();
    qputenv("VELMORA_WORKER", VELMORA_BIN_DIR "/velmora-worker");
#ifdef QT_WIDGETS_LIB
    const QApplication application(argc, argv);
#else
    const QCoreApplication application(argc, argv);
#endif
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
