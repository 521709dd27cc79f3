// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/settings.h"

#include <string_view>

namespace model {

/// What a setting reads as while the user has not set it. Colours are texts of the form "#rrggbb".
[[nodiscard]] foundation::SettingsTable settingsDefaults();

/// The settings that belong into the keyring of the desktop.
[[nodiscard]] foundation::SettingKeys secretSettings();

/// The names of the settings that code asks for.
namespace keys {

// The account and the state of synchronisation; without defaults.
inline constexpr std::string_view HasBeenRun = "HasBeenRun";
inline constexpr std::string_view ToodleDoUsername = "ToodleDoUsername";
inline constexpr std::string_view ToodleDoPassword = "ToodleDoPassword";
inline constexpr std::string_view toodledoKey = "toodledoKey";
inline constexpr std::string_view lastKeyUpdate = "lastKeyUpdate";
inline constexpr std::string_view dateLastSynched = "dateLastSynched";

inline constexpr std::string_view SyncToToodledo = "SyncToToodledo";
inline constexpr std::string_view SyncOnLaunch = "SyncOnLaunch";
inline constexpr std::string_view SyncInterval = "SyncInterval"; ///< minutes; 0 or less means never

// How the service is reached.
inline constexpr std::string_view ToodledoHost = "ToodledoHost"; ///< empty means the service's own address
inline constexpr std::string_view AcceptedCertificateDomain = "AcceptedCertificateDomain"; ///< empty means none
inline constexpr std::string_view RequestTimeout = "RequestTimeout"; ///< seconds for a whole request
inline constexpr std::string_view ReplyLimit = "ReplyLimit"; ///< megabytes
inline constexpr std::string_view EscapeParameterValues = "EscapeParameterValues";
inline constexpr std::string_view SyncGuards = "SyncGuards"; ///< protection against losing edits in a synchronisation

// What is shown, and how.
inline constexpr std::string_view BackgroundColor = "BackgroundColor";
inline constexpr std::string_view DetailBackgroundColor = "DetailBackgroundColor";
inline constexpr std::string_view TitleStartColor = "TitleStartColor";
inline constexpr std::string_view TitleEndColor = "TitleEndColor";
inline constexpr std::string_view HeadlineFontSize = "HeadlineFontSize";
inline constexpr std::string_view HeadlineFontName = "HeadlineFontName";
inline constexpr std::string_view ShowCompletedTasks = "ShowCompletedTasks";
inline constexpr std::string_view SmartFoldersApplyShowCompleted = "SmartFoldersApplyShowCompleted";
inline constexpr std::string_view UseLocation = "UseLocation";
/// A receiver's device or a recording, both NMEA, to take positions from; empty means the desktop's service.
inline constexpr std::string_view NmeaSource = "NmeaSource";
inline constexpr std::string_view NmeaBaudRate = "NmeaBaudRate"; ///< of a serial device
inline constexpr std::string_view GlobalHotKey = "Global Hot Key"; ///< dictionary of `keyCode` and `modifiers`
inline constexpr std::string_view ShowTodayInBadge = "ShowTodayInBadge";
inline constexpr std::string_view ShowInboxInBadge = "ShowInboxInBadge";

} // namespace keys

} // namespace model
