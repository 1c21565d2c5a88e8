#pragma once

#include "CoreExport.h"

#include <QDate>
#include <QString>

namespace corvane {
namespace base {
namespace entities {

/// What the configuration file says about the application: its names, type, version,
/// release date and single-instance settings.
class CORE_EXPORT ApplicationInformation
{
public:
    enum ApplicationType : int { GUI = 0, CONSOLE = 1, SERVICE = 2, NO_TYPE = 3 };

    ApplicationInformation();

    void getApplicationName(QString& applicationName) const;
    void getApplicationTitle(QString& applicationTitle) const;
    void getApplicationType(ApplicationType& applicationType) const;
    void getVersion(QString& version) const;
    void getCopyright(QString& copyright) const;
    void getReleaseDate(QDate& releaseDate) const;

    QString getApplicationName() const;
    QString getApplicationTitle() const;
    ApplicationType getApplicationType() const;
    QString getApplicationTypeAsString() const;
    QString getVersion() const;
    QString getVersionName() const;
    QString getCopyright() const;
    QDate getReleaseDate() const;
    QString getSingleAppId() const;
    bool hasSingleAppUserNotification() const;

    void setApplicationName(const QString& applicationName);
    void setApplicationTitle(const QString& applicationTitle);
    void setApplicationType(const ApplicationType& applicationType);
    void setVersion(const QString& version);
    void setVersionName(const QString& versionName);
    void setCopyright(const QString& copyright);
    void setReleaseDate(const QDate& releaseDate);
    void setSingleAppId(const QString& singleAppId);
    void setSingleAppUserNotification(bool singleAppUserNotification);

    /// "GUI", "CONSOLE" or "SERVICE" in any case; any other text leaves the type as it is.
    void setApplicationTypeFromString(const QString& text);
    /// An ISO date (yyyy-MM-dd); any other text stores a null date.
    void setReleaseDateFromString(const QString& text);
    /// True exactly for "true" in any case.
    void setSingleAppUserNoteFromString(const QString& text);

private:
    QString applicationName;
    ApplicationType applicationType = NO_TYPE;
    QString applicationTitle;
    QString version;
    QString versionName;
    QString copyright;
    QDate releaseDate;
    QString singleAppId;
    bool singleAppUserNotification = false;
};

} // namespace entities
} // namespace base
} // namespace corvane
