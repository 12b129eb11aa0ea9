#pragma once

#include "util/SettingsStore.h"

// The options, the font records and the main window's placement in the settings store.
namespace modSettings {

// Options, the two persisted font records and the main window's placement.
void LoadSettings();
void SaveSettings();

} // namespace modSettings
