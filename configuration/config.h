// The settings of the program: every text of the window, the log, the recent folder and the
// identifiers of the terminals that may be loaded.
//
// Owner: one global record, filled once from the configuration file before either mode runs.
// Threads: the main thread only.
#pragma once

#include <QString>

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

/// Room of a text field, its terminator included.
constexpr std::size_t kConfigTextSize = 256;

/// The record. Every text is terminated UTF-8, its bytes those of the configuration file.
struct VEXAConfig {
    char RecentPath[kConfigTextSize];      ///< folder in which the file dialog opens
    char LogPath[kConfigTextSize];         ///< log folder, "." for the one in the user's home
    char ApplicationName[kConfigTextSize]; ///< window title and heading
    char spare1[kConfigTextSize];          ///< never used
    char spare2[kConfigTextSize];          ///< never used
    char Database_file[kConfigTextSize];   ///< label of the database field
    char Browse[kConfigTextSize];          ///< browse button
    char Device_list[kConfigTextSize];     ///< label of the device list
    char Button_load[kConfigTextSize];     ///< load button
    /// Number of the PAD that the window loads into. The default file carries a label here, which
    /// reads as 0; that is intended.
    char PAD_number[kConfigTextSize];
    char Loading_progress[kConfigTextSize];   ///< label of the progress bar
    char Cancel[kConfigTextSize];             ///< cancel button
    char Renew_devices[kConfigTextSize];      ///< refresh button
    char Close_application[kConfigTextSize];  ///< close button
    char copyright[kConfigTextSize];          ///< foot of the window
    char LogOption[kConfigTextSize];          ///< "1" switches the log on
    std::vector<std::string> VID;             ///< supported USB vendor IDs, hexadecimal
    std::vector<std::string> PID;             ///< supported USB product IDs, paired with VID
    std::vector<std::string> ExplicativeText; ///< instructions; "[TAB]" indents what follows
};

/// The settings in force.
extern VEXAConfig g_configParams;

/// RecentPath as the window uses it.
extern QString PreviousdbName;

/// The reference set of English texts, all other fields empty. Nothing calls it: the default file
/// carries French texts of its own.
VEXAConfig getDefaultConfig();

/// Number of supported devices: a vendor ID and a product ID at the same place make one.
std::size_t supportedDeviceCount(const VEXAConfig& cfg);

/// Writes the record to the log.
void printConfig(VEXAConfig* cfg);

/// Stores a text in one of the record's fields, cut where the field ends.
inline void storeText(char (&field)[kConfigTextSize], const char* text) {
    (void)std::snprintf(field, sizeof field, "%s", text);
}
