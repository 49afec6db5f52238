#include "configuration/config_writer.h"

#include "app/log.h"
#include "configuration/config_location.h"

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

#include <optional>

namespace {

constexpr char kRecentPathPrefix[] = "&RecentPath=";

// No line break at the end: the reader would apply the last line twice. The same device stands
// there twice, as operators have it in their files.
constexpr char kDefaultFile[] =
    "#Fichier de configuration de l'application VEXA.\n"
    "#ce fichier doit être encodé en UTF8\n"
    "\n"
    "#Commentaire: option du log (log est activé si 1, désactivé si 0)\n"
    "&LogOption=0\n"
    "\n"
    "#Commentaire: répertoire pour le fichier log\n"
    "#si \".\" les logs sont dans \"Documents/VEXACharger\" sous Windows et \n"
    "# ~/Library/Application Support/VEXACharger sous Mac\n"
    "#\n"
    "&LogPath=.\n"
    "\n"
    "#Commentaire: répertoire par défaut pour la sélection de la base de données. Il sera "
    "automatiquement mis à jour.\n"
    "&RecentPath=\n"
    "\n"
    "#Commentaire: nom de l'application\n"
    "&ApplicationName=VEXA Chargeur\n"
    "\n"
    "#Commentaire: Texte explicatif. Chaque ligne commence par '&ExplicativeText='. Ecrire "
    "'&ExplicativeText=[TAB]' pour faire un tab.\n"
    "&ExplicativeText=Bienvenue à VEXA Chargeur !\n"
    "&ExplicativeText=[TAB]\n"
    "&ExplicativeText=1. Cliquer sur 'Parcourir' pour choisir une base de données (.db)\n"
    "&ExplicativeText=2. Choisir un périphérique dans 'Périphériques' (Cliquer sur 'Rafraîchir' si "
    "besoin)\n"
    "&ExplicativeText=3. Choisir un numéro de PAD\n"
    "&ExplicativeText=4. Cliquer sur 'Charger'\n"
    "\n"
    "#Commentaire: texte explicatif pour la base de données\n"
    "&Database_file=Base de données\n"
    "\n"
    "#Commentaire: texte explicatif pour le bouton 'Parcourir'\n"
    "&Browse=Parcourir\n"
    "\n"
    "#Commentaire: texte explicatif pour la liste des périphériques\n"
    "&Device_list=Périphériques\n"
    "\n"
    "#Commentaire: texte sur le bouton 'Charger'\n"
    "&Button_load=Charger\n"
    "\n"
    "#Commentaire: texte explicatif pour le choix du numéro PAD\n"
    "&PAD_number=Numéro de PAD\n"
    "\n"
    "#Commentaire: texte explicatif pour le progrès du chargement\n"
    "&Loading_progress=Progrès du chargement\n"
    "\n"
    "#Commentaire: texte sur le bouton 'Annuler'\n"
    "&Cancel=Annuler\n"
    "\n"
    "#Commentaire: texte sur le bouton 'Rafraîchir'\n"
    "&Renew_devices=Rafraîchir\n"
    "\n"
    "#Commentaire: texte sur le bouton 'Fermer l'application'\n"
    "&Close_application=Fermer\n"
    "\n"
    "#Commentaire: VID et PID des périphériques supportés\n"
    "&VID=" VEXA_VENDOR_ID "\n"
    "&PID=0012\n"
    "&VID=" VEXA_VENDOR_ID "\n"
    "&PID=0012";

/// \return no lines when the file cannot be opened, nothing when it cannot be read to its end
std::optional<QList<QByteArray>> readLines(const std::string& path) {
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly)) {
        return QList<QByteArray>();
    }
    QList<QByteArray> lines = file.readAll().split('\n');
    if (lines.last().isEmpty()) {
        lines.removeLast();
    }
    return file.error() == QFileDevice::NoError ? std::make_optional(lines) : std::nullopt;
}

} // namespace

void createConfigFile(char* path) {
    const FunctionTrace trace("createConfigFile");
    (void)replaceFile(path, QByteArray(kDefaultFile));
}

void writeConfig(std::string recentPath) {
    const FunctionTrace trace("writeConfig");
    const std::string path = configParentFolder("writeConfig") + "/" + "config/VEXA_init.ini";
    const std::optional<QList<QByteArray>> lines = readLines(path);
    if (!lines) {
        return; // Half of the settings must not take the place of all.
    }
    QByteArray content;
    for (const QByteArray& line : *lines) {
        if (line.startsWith(kRecentPathPrefix)) {
            content.append(kRecentPathPrefix).append(recentPath.c_str());
        } else {
            content.append(line);
        }
        content.append('\n');
    }
    (void)replaceFile(path, content);
}
