#include "configuration/config.h"

#include "app/log.h"

#include <algorithm>

VEXAConfig g_configParams{};
QString PreviousdbName;

VEXAConfig getDefaultConfig() {
    const FunctionTrace trace("getDefaultConfig");
    VEXAConfig cfg{};
    storeText(cfg.RecentPath, "C:\\");
    storeText(cfg.ApplicationName, "VEXA");
    cfg.ExplicativeText = {
        "Welcome to VEXA database loader !",
        "[TAB]",
        "1. Click 'Browse' to choose a database file (.db)",
        // "neccessary" is spelt as operators know the line.
        "2. Select a device in 'Device list' (Click on 'Refresh' if neccessary)",
        "3. Select a PAD number",
        "4. Click 'Load'",
    };
    storeText(cfg.Database_file, "Database file");
    storeText(cfg.Browse, "Browse");
    storeText(cfg.Device_list, "Device list");
    storeText(cfg.Button_load, "Load");
    storeText(cfg.PAD_number, "2");
    storeText(cfg.Loading_progress, "Loading progress");
    storeText(cfg.Cancel, "Cancel");
    storeText(cfg.Renew_devices, "Refresh");
    storeText(cfg.Close_application, "Close");
    storeText(cfg.copyright, "VEXACharger");
    return cfg;
}

std::size_t supportedDeviceCount(const VEXAConfig& cfg) {
    return std::min(cfg.VID.size(), cfg.PID.size());
}

void printConfig(VEXAConfig* cfg) {
    const FunctionTrace trace("printConfig");
    VEXALog(kLogInfo, "Information of the config struct: ");
    VEXALog(kLogInfo, "RecentPath=%s", cfg->RecentPath);
    VEXALog(kLogInfo, "LogPath=%s", cfg->LogPath);
    VEXALog(kLogInfo, "ApplicationName=%s", cfg->ApplicationName);
    for (const std::string& text : cfg->ExplicativeText) {
        VEXALog(kLogInfo, "ExplicativeText=%s", text.c_str());
    }
    VEXALog(kLogInfo, "Database_file=%s", cfg->Database_file);
    VEXALog(kLogInfo, "Browse=%s", cfg->Browse);
    VEXALog(kLogInfo, "Device_list=%s", cfg->Device_list);
    VEXALog(kLogInfo, "Button_load=%s", cfg->Button_load);
    VEXALog(kLogInfo, "PAD_number=%s", cfg->PAD_number);
    VEXALog(kLogInfo, "Loading_progress=%s", cfg->Loading_progress);
    VEXALog(kLogInfo, "Cancel=%s", cfg->Cancel);
    VEXALog(kLogInfo, "Renew_devices=%s", cfg->Renew_devices);
    VEXALog(kLogInfo, "Close_application=%s", cfg->Close_application);
    const std::size_t devices = supportedDeviceCount(*cfg);
    VEXALog(kLogInfo, "%d supported device(s)", static_cast<int>(devices));
    for (std::size_t i = 0; i < devices; ++i) {
        VEXALog(kLogInfo, "VID=%s - PID=%s", cfg->VID[i].c_str(), cfg->PID[i].c_str());
    }
}
