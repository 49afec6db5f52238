#include "app/window_mode.h"

#include "ui/load_worker.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include <cstdlib>

namespace {

/// The texts of the toolkit's own buttons and dialogs. Its files have had two names, and of the
/// newer ones there is one Portuguese for all regions.
void loadToolkitTexts(QTranslator& translator, const QString& localeName) {
    const QString folder = QLibraryInfo::location(QLibraryInfo::TranslationsPath);
    const bool isPortuguese = localeName.startsWith("pt");
    (void)(translator.load("qtbase_" + localeName, folder) ||
           (isPortuguese && translator.load("qtbase_pt_BR", folder)) ||
           translator.load("qt_" + localeName, folder));
}

int showWindow() {
    VEXAInterface window;
    window.show();
    return QApplication::exec();
}

} // namespace

int runWindow(const QString& localeName) {
    QTranslator toolkitTranslator;
    loadToolkitTexts(toolkitTranslator, localeName);
    (void)QCoreApplication::installTranslator(&toolkitTranslator);
    QTranslator translator;
    // Any region of a language finds its file: without fr_CA, fr is taken.
    (void)translator.load(QCoreApplication::applicationDirPath() + "/lang/vexaload_" + localeName +
                          ".qm");
    (void)QCoreApplication::installTranslator(&translator);
    const int result = showWindow();
    if (!cancelAllLoads()) {
        std::_Exit(result); // A thread still uses what would be destroyed on the usual way out.
    }
    return result;
}
