#pragma once

#include "contracts/files.h"
#include "contracts/fpSpread.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/forms.h"
#include "frame/services.h"
#include "records/Statement.h"
#include "session/VisitContext.h"
#include "support/ClinicDatabase.h"
#include "support/FailingFiles.h"
#include "support/FakeVideoCap.h"
#include "support/ScriptedDesktop.h"
#include "support/testing.h"

/// A whole station without a screen, a camera or a clinic around it: capture root, database with one patient, setup and
/// visit, real grid and real files, a video control that serves numbered frames. Sets the globals of the station.
///
/// The folder is kept when the test has failed.
class StationInABox
{
public:
    /// `driver` is `QSQLITE`, or `QMARIADB` for a database on the server of this test program.
    explicit StationInABox(const QString& driver = QStringLiteral("QSQLITE"));
    ~StationInABox();

    ScriptedDesktop& Desk() { return *m_desktop; }
    FailingFiles& FaultyFiles() { return *m_files; }
    /// The server of this test program; started at first use.
    static PrivateMariaDb& Server();
    const ClinicDatabase& Database() const { return *m_database; }

    /// Capture root as the setup gives it, with its backslash.
    QString Root() const;
    /// A picture's path as the station joins it.
    QString PicturePath(const QString& ymd, const QString& etc, int number) const;
    /// Names in a section's folder of a year, hidden ones too.
    QStringList Names(const QString& year, const QString& etc) const;

    /// The first column of the first row that the statement gives, as text; asked beside the station's connection.
    QString Value(const QString& statement);
    void Run(const QString& statements);

    /// A stored picture of the patient: file and `cap` row. `note` also writes the `ca` row, unless it is null.
    void AddPicture(const QString& ymd, const QString& etc, int number, const QString& note = {});
    /// JPEG picture of one colour.
    static QByteArray Jpeg(QSize size, Qt::GlobalColor colour);

    static constexpr char16_t Chart[] = u"00001234";
    static constexpr char16_t Today[] = u"20261124";

private:
    QTemporaryDir m_folder;
    std::unique_ptr<ClinicDatabase> m_database;
    ConnectionPointer m_beside;
    ScriptedDesktop* m_desktop = nullptr;
    FailingFiles* m_files = nullptr;
};
