// Runs the tests of the window, without a display unless the environment names one.

#include "app/toolkit_messages.h"
#include "ui/load_worker.h"

#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// What the toolkit's platform without a display, and the search for fonts, leave behind at the
/// end.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libqoffscreen\nleak:QScreen\nleak:QPlatformScreen\nleak:libfontconfig\n";
}

int main(int argc, char* argv[]) {
    testing::InitGoogleTest(&argc, argv);
    quietToolkit();
    // Nothing of the tester's desktop reaches the window, nor the other way round.
    const QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    qputenv("QT_FONT_DPI", "72");
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_CURRENT_DESKTOP", "QT_STYLE_OVERRIDE",
                             "QT_QPA_PLATFORMTHEME", "QT_SCALE_FACTOR", "LANGUAGE"}) {
        (void)qunsetenv(name);
    }
    qputenv("LC_ALL", "C.UTF-8");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setEffectEnabled(Qt::UI_AnimateCombo, false);
    const int result = RUN_ALL_TESTS();
    (void)cancelAllLoads();
    return result;
}
