#include "Configuration/ApplicationInformation.h"

namespace corvane {
namespace base {
namespace entities {

ApplicationInformation::ApplicationInformation() = default;

void ApplicationInformation::getApplicationName(QString& applicationName) const
{
    applicationName = this->applicationName;
}

void ApplicationInformation::getApplicationTitle(QString& applicationTitle) const
{
    applicationTitle = this->applicationTitle;
}

void ApplicationInformation::getApplicationType(ApplicationType& applicationType) const
{
    applicationType = this->applicationType;
}

void ApplicationInformation::getVersion(QString& version) const
{
    version = this->version;
}

void ApplicationInformation::getCopyright(QString& copyright) const
{
    copyright = this->copyright;
}

void ApplicationInformation::getReleaseDate(QDate& releaseDate) const
{
    releaseDate = this->releaseDate;
}

QString ApplicationInformation::getApplicationName() const
{
    return applicationName;
}

QString ApplicationInformation::getApplicationTitle() const
{
    return applicationTitle;
}

ApplicationInformation::ApplicationType ApplicationInformation::getApplicationType() const
{
    return applicationType;
}

QString ApplicationInformation::getApplicationTypeAsString() const
{
    switch (applicationType) {
    case GUI:
        return QStringLiteral("GUI");
    case CONSOLE:
        return QStringLiteral("CONSOLE");
    case SERVICE:
        return QStringLiteral("SERVICE");
    default:
        return QStringLiteral("NO_TYPE");
    }
}

QString ApplicationInformation::getVersion() const
{
    return version;
}

QString ApplicationInformation::getVersionName() const
{
    return versionName;
}

QString ApplicationInformation::getCopyright() const
{
    return copyright;
}

QDate ApplicationInformation::getReleaseDate() const
{
    return releaseDate;
}

QString ApplicationInformation::getSingleAppId() const
{
    return singleAppId;
}

bool ApplicationInformation::hasSingleAppUserNotification() const
{
    return singleAppUserNotification;
}

void ApplicationInformation::setApplicationName(const QString& applicationName)
{
    this->applicationName = applicationName;
}

void ApplicationInformation::setApplicationTitle(const QString& applicationTitle)
{
    this->applicationTitle = applicationTitle;
}

void ApplicationInformation::setApplicationType(const ApplicationType& applicationType)
{
    this->applicationType = applicationType;
}

void ApplicationInformation::setVersion(const QString& version)
{
    this->version = version;
}

void ApplicationInformation::setVersionName(const QString& versionName)
{
    this->versionName = versionName;
}

void ApplicationInformation::setCopyright(const QString& copyright)
{
    this->copyright = copyright;
}

void ApplicationInformation::setReleaseDate(const QDate& releaseDate)
{
    this->releaseDate = releaseDate;
}

void ApplicationInformation::setSingleAppId(const QString& singleAppId)
{
    this->singleAppId = singleAppId;
}

void ApplicationInformation::setSingleAppUserNotification(bool singleAppUserNotification)
{
    this->singleAppUserNotification = singleAppUserNotification;
}

void ApplicationInformation::setApplicationTypeFromString(const QString& text)
{
    static const struct
    {
        const char* text;
        ApplicationType type;
    } types[] = {{"GUI", GUI}, {"CONSOLE", CONSOLE}, {"SERVICE", SERVICE}};

    for (const auto& candidate : types) {
        if (text.compare(QLatin1String(candidate.text), Qt::CaseInsensitive) == 0) {
            applicationType = candidate.type;
            return;
        }
    }
}

void ApplicationInformation::setReleaseDateFromString(const QString& text)
{
    releaseDate = QDate::fromString(text, Qt::ISODate);
}

void ApplicationInformation::setSingleAppUserNoteFromString(const QString& text)
{
    singleAppUserNotification = text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
}

} // namespace entities
} // namespace base
} // namespace corvane
