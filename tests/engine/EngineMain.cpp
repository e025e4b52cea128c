// Runs the engine's tests inside a Qt application without a screen.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
