#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <stop_token>

/// A picture as another system is to know it. Texts as the clinic's tables have them; the adapter makes them harmless
/// and cuts them to what the standard allows.
struct DicomPicture
{
    QString chart;
    QString patientName;
    QString birthDate; ///< `yyyymmdd`; empty when it isn't known.
    QString sex;       ///< "M" or "F"; empty when it isn't known.
    QString ymd;       ///< Date of the visit.
    QString section;
    QDateTime takenAt; ///< Local time.
    QString doctor;    ///< Name; may be empty.
    QString institution;
    QString clinic;  ///< Care institution number: two clinics' charts of one number are two patients.
    QString uidRoot; ///< The clinic's own root of identifiers; empty: `2.25`, which needs no registration.
    int number = 0;
};

/// A server that takes pictures.
struct DicomPeer
{
    QString host;
    int port = 104;
    QString calledAet;
    QString callingAet;
};

struct DicomOutcome
{
    enum Kind {
        Accepted,
        Refused, ///< It will be refused the next time too.
        Away,    ///< Nobody answered, or something on this machine is in the way: it may pass later.
        Cut,     ///< Something broke on this very object, such as the connection on its way: it may pass later.
    };

    Kind kind = Away;
    /// It may be accepted another time.
    bool MayPassLater() const { return kind == Away || kind == Cut; }

    QString reason = {}; ///< For the operator, in Korean, one line; empty when accepted.
};

/// Pictures as DICOM objects. Each call blocks, never throws but where it says so, ends within its own limit of time,
/// and at once, as `Away`, when a stop is asked for. While objects
/// are sent, others may be made on another thread; apart from that one thread uses it at a time.
class DicomKit
{
public:
    virtual ~DicomKit() = default;

    /// A folder for objects on their way, which only this user can enter; ends in a separator. It goes with this
    /// object, and what a killed process left there goes with the next one. Throws PlatformError.
    virtual QString WorkFolder() = 0;

    /// Makes an object file of a picture file's content, whose coded data are taken over as they are. Its path lies in
    /// the work folder. Refused: content that no viewer has to understand, such as another format than baseline JPEG.
    virtual DicomOutcome MakeObject(const QByteArray& content, const DicomPicture& picture, const QString& path,
                                    const std::stop_token& stop) = 0;
    /// Sends object files of the work folder in their order, and gives what became of each. Behind one that is away or
    /// cut the others are away.
    virtual QList<DicomOutcome> Send(const DicomPeer& peer, const QStringList& paths, const std::stop_token& stop) = 0;
    /// Asks the server whether it is there.
    virtual DicomOutcome Echo(const DicomPeer& peer, const std::stop_token& stop) = 0;
    /// Writes the directory `DICOMDIR` of a folder's objects, which lie in its folder `DICOM` under names of digits;
    /// takes the directory away when there are none.
    virtual DicomOutcome MakeDirectory(const QString& folder, const std::stop_token& stop) = 0;
};

/// Name under which `CreateObject` makes the kit.
inline constexpr char16_t DicomKitName[] = u"dcmtk";
