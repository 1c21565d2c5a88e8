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
    /// How the application runs.
    enum ApplicationType : int { GUI = 0, CONSOLE = 1, SERVICE = 2, NO_TYPE = 3 };

    /** \var GUI
     * A Qt Widgets application. */
    /** \var CONSOLE
     * A console application without windows. */
    /** \var SERVICE
     * A background service, controlled through its command line. */
    /** \var NO_TYPE
     * No type or an unknown one; the application does not start. */

    /// Empty texts, a null release date, NO_TYPE, no single-application id, no user notification.
    ApplicationInformation();

    /// Copies the application's name into applicationName.
    void getApplicationName(QString& applicationName) const;
    /// Copies the application's title into applicationTitle.
    void getApplicationTitle(QString& applicationTitle) const;
    /// Copies the application's type into applicationType.
    void getApplicationType(ApplicationType& applicationType) const;
    /// Copies the application's version text into version.
    void getVersion(QString& version) const;
    /// Copies the copyright text into copyright.
    void getCopyright(QString& copyright) const;
    /// Copies the release date into releaseDate.
    void getReleaseDate(QDate& releaseDate) const;

    /// The application's name ("applicationname").
    QString getApplicationName() const;
    /// The application's title ("applicationtitle").
    QString getApplicationTitle() const;
    /// The application's type ("applicationtype"); NO_TYPE when none was given or understood.
    ApplicationType getApplicationType() const;
    /// The type as text: "GUI", "CONSOLE", "SERVICE" or "NO_TYPE".
    QString getApplicationTypeAsString() const;
    /// The application's version text ("version").
    QString getVersion() const;
    /// The version's name ("versionname").
    QString getVersionName() const;
    /// The copyright text ("copyright").
    QString getCopyright() const;
    /// The release date ("releasedate"); null when none was given or understood.
    QDate getReleaseDate() const;
    /// The single-application id ("singleappid"); empty when any number of instances may run.
    QString getSingleAppId() const;
    /// Whether a later instance tells the user that one is running already
    /// ("singleappusernotification").
    bool hasSingleAppUserNotification() const;

    /// Sets the application's name.
    void setApplicationName(const QString& applicationName);
    /// Sets the application's title.
    void setApplicationTitle(const QString& applicationTitle);
    /// Sets the application's type.
    void setApplicationType(const ApplicationType& applicationType);
    /// Sets the application's version text.
    void setVersion(const QString& version);
    /// Sets the version's name.
    void setVersionName(const QString& versionName);
    /// Sets the copyright text.
    void setCopyright(const QString& copyright);
    /// Sets the release date.
    void setReleaseDate(const QDate& releaseDate);
    /// Sets the single-application id; an empty one lets any number of instances run.
    void setSingleAppId(const QString& singleAppId);
    /// Sets whether a later instance tells the user that one is running already.
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
