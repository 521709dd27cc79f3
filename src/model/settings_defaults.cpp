// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/settings_defaults.h"

namespace model {

foundation::SettingsTable settingsDefaults()
{
    using namespace std::string_literals;
    using Dictionary = std::map<std::string, std::int64_t>;
    const auto integer = [](std::int64_t value) { return value; };
    return {
        {"BackgroundColor", "#ffffff"s},
        {"DetailBackgroundColor", "#b2faf2"s},
        {"TitleStartColor", "#96e0e0"s},
        {"TitleEndColor", "#b2faf2"s},
        {"ShowCompletedTasks", false},
        {"SmartFoldersApplyShowCompleted", true},
        {"UseLocation", false},
        {"HeadlineFontSize", integer(24)},
        {"HeadlineFontName", "Lucinda Grande"s}, // spelt so in the settings of every user
        {"Global Hot Key", Dictionary{{"keyCode", 17}, {"modifiers", 4352}}}, // Control-Command-T
        {"TodayTip", true},
        {"InboxTip", true},
        {"LocationTip", true},
        {"TrashTip", true},
        {"FolderTip", true},
        {"ContextTip", true},
        {"SmartFolderTip", true},
        {"SyncToToodledo", false},
        {"SyncOnLaunch", false},
        {"SyncInterval", integer(0)},
        {"ShowFolderColumn", true},
        {"ShowContextColumn", true},
        {"ShowPriorityColumn", false},
        {"ShowDueDateColumn", false},
        {"ShowStartDateColumn", false},
        {"ShowStarColumn", true},
        {"ShowStateColumn", true},
        {"ShowTitleColumn", true},
        {"ShowCreationDateColumn", false},
        {"ShowModifiedDateColumn", false},
        {"ShowLengthColumn", false},
        {"ShowTodayInBadge", true},
        {"ShowInboxInBadge", true},
        {"NmeaSource", ""s},
        {"NmeaBaudRate", integer(4800)}, // what NMEA 0183 says
        {"ToodledoHost", ""s},
        {"AcceptedCertificateDomain", ""s},
        {"RequestTimeout", integer(30)},
        {"ReplyLimit", integer(128)},
        {"EscapeParameterValues", true},
        {"SyncGuards", true},
    };
}

foundation::SettingKeys secretSettings()
{
    return {std::string(keys::ToodleDoPassword)};
}

} // namespace model
