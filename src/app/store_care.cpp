// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/store_care.h"

#include "app/error_text.h"
#include "app/text.h"
#include "objectstore/store_care.h"

namespace app {

using foundation::Error;

namespace {

/// The first trouble that the care of `store` meets.
Error careFor(const objectstore::Store &store, const std::filesystem::path &backups, bool isChecking)
{
    if (isChecking) {
        if (auto checked = objectstore::quickCheck(store); !checked) {
            Error error = std::move(checked.error());
            error.message = toUtf8(errorText(error) + QLatin1Char(' ')
                + StoreCare::tr("The last copies of it lie in \"%1\".").arg(toQString(backups.string())));
            return error;
        }
    }
    if (!store.notice().empty())
        return {};
    auto copied = objectstore::backUpDaily(store, backups);
    return copied ? Error{} : std::move(copied.error());
}

} // namespace

StoreCare::StoreCare(const objectstore::Store &store, std::filesystem::path backups)
    : m_store(store), m_backups(std::move(backups))
{ }

void StoreCare::checkAndBackUp()
{
    run(true);
}

void StoreCare::backUp()
{
    run(false);
}

void StoreCare::run(bool isChecking)
{
    if (std::exchange(m_isBusy, true))
        return;
    m_thread = std::jthread([this, isChecking] {
        const Error trouble = careFor(m_store, m_backups, isChecking);
        QMetaObject::invokeMethod(
            this,
            [this, trouble] {
                m_isBusy = false;
                if (trouble)
                    Q_EMIT troubleFound(trouble);
                Q_EMIT finished();
            },
            Qt::QueuedConnection);
    });
}

} // namespace app
