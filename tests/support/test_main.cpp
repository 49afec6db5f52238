// Runs the tests with the application object that the SQL module needs.

#include "app/toolkit_messages.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char* argv[]) {
    testing::InitGoogleTest(&argc, argv);
    quietToolkit();
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
