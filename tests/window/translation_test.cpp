// The texts of the window in all its languages.

#include "tests/support/files.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTranslator>

#include <gtest/gtest.h>

namespace {

struct Text {
    const char* context;
    const char* source;
};

// Every text that is translated, in the context in which it is looked up.
constexpr Text kTexts[] = {
    {"QMainWindow", "Select a database"},
    {"QMainWindow", "Database Files (*.db)"},
    {"QObject", "VEXA message"},
    {"QObject", "Config file not valid. Click OK to launch application"},
    {"VEXAInterface", "VEXA Message"},
    {"VEXAInterface", "VEXA message"},
    {"VEXAInterface", "Database file does not exist"},
    {"VEXAInterface", "Loading succeeded"},
    {"VEXAInterface", "The database is not coherent"},
    {"VEXAInterface", "The database could not be opened"},
    {"VEXAInterface", "Initialisation protocol failed"},
    {"VEXAInterface", "A data block was refused"},
    {"VEXAInterface", "Failed to send ending frame"},
    {"VEXAInterface", "Loading was cancelled"},
    {"VEXAInterface", "No response from the terminal"},
    {"VEXAThread", "Loading request failed - error : "},
    {"VEXAThread", "A NACK was received : "},
    {"VEXAThread", "Timeout when sending data"},
};

const QStringList kLanguages = {"de", "es", "fr", "it", "nl", "pt"};

QString translationFile(const QString& locale) {
    return QCoreApplication::applicationDirPath() + "/lang/vexaload_" + locale + ".qm";
}

TEST(TranslationTest, EveryTextIsTranslatedIntoEveryLanguage) {
    for (const QString& language : kLanguages) {
        QTranslator translator;
        ASSERT_TRUE(translator.load(translationFile(language))) << language.toStdString();
        for (const Text& text : kTexts) {
            const QString translated = translator.translate(text.context, text.source);
            EXPECT_FALSE(translated.isEmpty()) << language.toStdString() << ": " << text.source;
            EXPECT_NE(translated, text.source) << language.toStdString();
            // What is appended to a text stands off from it.
            EXPECT_EQ(translated.endsWith(' '), QString(text.source).endsWith(' '))
                << language.toStdString() << ": " << text.source;
            EXPECT_EQ(translated.contains("(*.db)"), QString(text.source).contains("(*.db)"));
        }
    }
}

TEST(TranslationTest, NothingInTheSourcesIsMissingOrUnfinished) {
    const QTemporaryDir folder;
    for (const QString& language : kLanguages) {
        const QString name = "/vexaload_" + language + ".ts";
        const QString fresh = folder.path() + name;
        const QByteArray kept = readFile(VEXA_SOURCES "/resources/lang" + name);
        ASSERT_TRUE(writeFile(fresh, kept));
        QProcess lupdate;
        lupdate.setWorkingDirectory(VEXA_SOURCES);
        lupdate.start(VEXA_LUPDATE, {"-silent", "-no-obsolete", "-locations", "none", "app",
                                     "configuration", "loader", "ui", "-ts", fresh});
        ASSERT_TRUE(lupdate.waitForFinished() && lupdate.exitCode() == 0)
            << lupdate.readAllStandardError().toStdString();
        const QByteArray updated = readFile(fresh);
        EXPECT_FALSE(updated.contains("unfinished")) << language.toStdString();
        EXPECT_EQ(updated.count("<source>"), static_cast<int>(std::size(kTexts)));
        EXPECT_EQ(kept.count("<source>"), static_cast<int>(std::size(kTexts)));
    }
}

TEST(TranslationTest, AnyRegionOfALanguageFindsItsFile) {
    for (const auto& [locale, text] : {std::pair<const char*, const char*>("fr_FR", "Message VEXA"),
                                       {"fr_CA", "Message VEXA"},
                                       {"de_AT", "VEXA-Meldung"},
                                       {"es_MX", "Mensaje de VEXA"},
                                       {"it_CH", "Messaggio VEXA"},
                                       {"nl_BE", "VEXA-melding"},
                                       {"pt_BR", "Mensagem VEXA"}}) {
        QTranslator translator;
        ASSERT_TRUE(translator.load(translationFile(locale))) << locale;
        EXPECT_EQ(translator.translate("VEXAInterface", "VEXA Message"), text) << locale;
    }
}

TEST(TranslationTest, OtherLanguagesHaveNoFileAndKeepTheEnglishTexts) {
    for (const char* locale : {"en_GB", "C", "ja_JP"}) {
        QTranslator translator;
        EXPECT_FALSE(translator.load(translationFile(locale))) << locale;
    }
}

} // namespace
