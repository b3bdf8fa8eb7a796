#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <stop_token>

/// What tells a visit's study, and its patient, from every other one elsewhere. Once something has been given to others
/// under it, it stays, whatever the setup says then.
struct DicomIdentity
{
    QString institution; ///< Goes into the identifiers: two clinics' visits of one chart and day are two studies.
    QString uidRoot;     ///< The clinic's own root of identifiers; empty: `2.25`, which needs no registration.
    QString patientId;   ///< The chart, with the clinic's prefix where it has one.
    QString issuer;      ///< Of the patient's number; may be empty.
    QString study = {};  ///< The study's own identifier; empty: it is made from the others.

    bool operator==(const DicomIdentity&) const = default;
};

/// Character set of the texts in an object.
enum class DicomCharacters {
    Unicode, ///< `ISO_IR 192`
    Korean,  ///< `\ISO 2022 IR 149` with its escapes; an object with other letters goes in Unicode.
};

/// What a section's pictures are to other systems.
enum class DicomModality {
    Endoscopy,   ///< ES
    Ultrasound,  ///< US
    Microscopy,  ///< GM
    Photography, ///< XC
};

struct DicomPictureKind
{
    DicomModality modality = DicomModality::Endoscopy;
    QString bodyPart;   ///< Defined term of the standard, such as "STOMACH"; empty when nothing says it.
    QString laterality; ///< "R" or "L"; empty when nothing says it.

    bool operator==(const DicomPictureKind&) const = default;
};

/// What the hospital has ordered, as its worklist has it. Texts as they are read, without escapes; any may be empty.
struct DicomOrder
{
    QString accession;       ///< (0008,0050)
    QString procedureId;     ///< (0040,1001) of the requested procedure.
    QString procedureText;   ///< (0032,1060)
    QString procedureCode;   ///< Code value of (0032,1064),
    QString procedureScheme; ///< its scheme,
    QString procedureName;   ///< and its meaning.
    QString stepId;          ///< (0040,0009) of the scheduled procedure step.
    QString stepText;        ///< (0040,0007)
    QString referring;       ///< (0008,0090), with its `^`.

    bool operator==(const DicomOrder&) const = default;
};

/// What a visit's study is elsewhere, beside its identity. Once a picture has been sent it stays, but for the order.
struct DicomStudy
{
    QString time; ///< `HHmmss`: of the first of its pictures that was sent; empty when earlier releases sent them.
    DicomPictureKind kind;
    DicomOrder order;

    bool operator==(const DicomStudy&) const = default;
};

/// An object that stands at a server.
struct DicomReference
{
    QString classUid;
    QString uid;

    bool operator==(const DicomReference&) const = default;
};

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
    QDateTime takenAt;   ///< Local time.
    QString doctor;      ///< Name; may be empty.
    QString institution; ///< Name of the clinic.
    DicomIdentity identity;
    DicomCharacters characters = DicomCharacters::Unicode;
    bool hasNameParts = false; ///< Korean names are told as family and given name.
    DicomStudy study;
    int number = 0;
    int instance = 0; ///< Instance number in its series; 0: the picture's own number.
    /// Of the picture that this one was marked up from; empty for an original.
    DicomReference original;
    QString burnedIn;   ///< Whether a name may stand in the picture: "YES" or "NO"; empty: nothing is said of it.
    int restorings = 0; ///< How often it has come back from the deleted ones: it is another instance then.
};

/// Files of an encrypted connection, as the machine names them. With an authority every connection is encrypted or
/// isn't made.
struct DicomTls
{
    QString authority;   ///< Certificates that the server's is checked by (PEM); empty: nothing is encrypted.
    QString certificate; ///< The station's own, where the server wants one (PEM).
    QString key;         ///< Its private key (PEM, without a password).

    bool operator==(const DicomTls&) const = default;
};

/// A server of the hospital.
struct DicomPeer
{
    QString host;
    int port = 104;
    QString calledAet;
    QString callingAet;
    DicomTls tls = {};

    bool operator==(const DicomPeer&) const = default;
};

struct DicomOutcome
{
    enum Kind {
        Accepted,
        Refused,     ///< This object, the next time too.
        Passing,     ///< The server can't take it now, being full or at fault: it may pass.
        KindRefused, ///< The server takes no objects of this kind.
        PeerRefused, ///< The server wants nothing of this station.
        Away,        ///< Nobody answered, or something on this machine is in the way: it may pass.
        Broken,      ///< The connection broke, or fell silent, on this very object: it may pass.
    };

    Kind kind = Away;
    QString reason = {};        ///< For the operator, in Korean, one line; empty when accepted.
    int status = NoStatus;      ///< The server's own word for it.
    bool isOtherSet = false;    ///< Accepted in Unicode, though another character set was wanted.
    DicomReference stored = {}; ///< What the server has now, when it has accepted an object.

    static constexpr int NoStatus = -1;
};

/// A report of a visit, beside its content.
struct DicomReport
{
    QString title;
    QDateTime writtenAt;        ///< Local time.
    DicomReference predecessor; ///< The report that this one takes the place of; empty: there is none.
    int instance = 1;           ///< Instance number in its series.
};

/// A movie of a visit, beside its file.
struct DicomMovie
{
    int columns = 0;
    int rows = 0;
    int frames = 0;
    double frameMs = 0;  ///< From one frame to the next.
    QDateTime startedAt; ///< Local time.
    bool hasSound = false;
    int instance = 1; ///< Instance number in its series.
    QByteArray key;   ///< What tells it from the visit's other movies, and from an earlier one of its name.
};

/// What a server takes.
struct DicomAbilities
{
    /// Class and transfer syntax of each kind of object that the station may send, as the server has agreed to them.
    struct Kind
    {
        QString classUid;
        bool asItIs = false;       ///< JPEG, PDF, MPEG-4: as the file has it.
        bool uncompressed = false; ///< A picture whose coded data have been decoded.
    };

    QList<Kind> kinds; ///< Pictures by their modality, then reports, movies, rejections; all of them.
    bool answersQuestions = false;
    bool isEncrypted = false;
};

/// A disc's directory.
struct DicomDisc
{
    bool isUncompressed = false; ///< Its pictures are, as MakeObject has made them.
    QString name;                ///< Of the clinic; what a directory can't hold of it is left away.
};

/// An object that the server has.
struct DicomFound
{
    QString uid;
    int number = 0; ///< Of the instance in its series; 0 when the server doesn't tell.
};

/// A study that the server has.
struct DicomFoundStudy
{
    QString uid;
    QString patientId;
    QString patientName; ///< Without the separators of its parts.
};

/// A picture file that has been looked through to its end; see `DicomKit::Look`.
class DicomLook
{
public:
    virtual ~DicomLook() = default;
};

/// Pictures as DICOM objects, and the way to a server. Each call blocks, never throws, ends within its own limit of
/// time and memory whatever the server sends, and at once, as `Away`, when a stop is asked for. One thread uses it at a
/// time.
class DicomKit
{
public:
    virtual ~DicomKit() = default;

    /// A connection to the server, on which pictures are stored and asked for; one that is open is closed before.
    /// `Passing`: the server lets nobody in for now; `PeerRefused`: not this station.
    virtual DicomOutcome Open(const DicomPeer& peer, const std::stop_token& stop) = 0;
    /// Sends a picture file's content, whose coded data are taken over as they are, as one object, and gives the
    /// server's answer. `Refused` without asking the server: content that no viewer has to understand, such as another
    /// format than baseline JPEG. Behind `Away` and `Cut` the connection is closed.
    /// A server that takes no JPEG gets the decoded picture. `KindRefused`, here and below: objects of this class,
    /// those of others may go all the same.
    /// `look` is one at that very content; null: it is taken here.
    virtual DicomOutcome Store(const QByteArray& content, const DicomPicture& picture,
                               const std::shared_ptr<const DicomLook>& look, const std::stop_token& stop) = 0;
    DicomOutcome Store(const QByteArray& content, const DicomPicture& picture, const std::stop_token& stop)
    {
        return Store(content, picture, nullptr, stop);
    }
    /// Looks a picture's content through, as it has to be before it may leave, and turns it upright: that takes as long
    /// as decoding it. On any thread, also beside other calls. Null when nothing can be said of it for now.
    virtual std::shared_ptr<const DicomLook> Look(const QByteArray& content, const std::stop_token& stop) const = 0;
    /// Sends a report, a PDF document, into the visit's series of reports. What belongs to a single picture in `facts`
    /// doesn't count, here and in the next two.
    virtual DicomOutcome StoreReport(const QByteArray& pdf, const DicomReport& report, const DicomPicture& facts,
                                     const std::stop_token& stop) = 0;
    /// Sends a movie, H.264 (High Profile, level 4.1 at most) in an MP4 file or a transport stream, into the visit's
    /// series of movies. The file, a path of the station, is of less than 4 GB, and is never in memory as a whole.
    virtual DicomOutcome StoreMovie(const QString& path, const DicomMovie& movie, const DicomPicture& facts,
                                    const std::stop_token& stop) = 0;
    /// Tells the server that these objects of the visit, pictures, reports or movies, are rejected: they lie in the
    /// series of their classes.
    virtual DicomOutcome StoreRejection(const QList<DicomReference>& rejected, const QDateTime& at,
                                        const DicomPicture& facts, const std::stop_token& stop) = 0;
    /// Those of the studies with these identifiers that the server has. `KindRefused` by one that isn't to be asked.
    virtual DicomOutcome FindStudies(const QStringList& uids, QList<DicomFoundStudy>& found,
                                     const std::stop_token& stop) = 0;
    /// The pictures of a study's one series that the server has.
    virtual DicomOutcome FindPictures(const QString& study, const QString& series, QList<DicomFound>& found,
                                      const std::stop_token& stop) = 0;
    /// Nothing happens without a connection.
    virtual void Close() = 0;

    /// Asks the server whether it is there, on a connection of its own.
    virtual DicomOutcome Echo(const DicomPeer& peer, const std::stop_token& stop) = 0;

    /// Asks the server on a connection of its own what it takes. Nothing is stored.
    virtual DicomOutcome Abilities(const DicomPeer& peer, DicomAbilities& abilities, const std::stop_token& stop) = 0;

    /// How an object holds its picture.
    enum class Coding { Jpeg, Uncompressed };
    /// Makes the whole content of an object file of a picture file's.
    virtual DicomOutcome MakeObject(const QByteArray& content, const DicomPicture& picture, Coding coding,
                                    QByteArray& object, const std::stop_token& stop) = 0;
    /// Writes the directory `DICOMDIR` of a folder's objects, which lie in its folder `DICOM` under names of digits;
    /// takes the directory away when there are none.
    virtual DicomOutcome MakeDirectory(const QString& folder, const DicomDisc& disc, const std::stop_token& stop) = 0;

    /// Takes away the folders with objects that killed processes of earlier releases have left on this machine.
    virtual void RemoveLeftObjects() = 0;
};

/// Name under which `CreateObject` makes the kit.
inline constexpr char16_t DicomKitName[] = u"dcmtk";
