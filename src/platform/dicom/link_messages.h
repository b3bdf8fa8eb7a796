#pragma once

#include <QCborValue>

/// What the DICOM kit and its program say to each other, over one socket: each message is its length, 32 bits in little
/// endian, and a CBOR map with these keys. Every request has one answer; the program ends when the socket does.
namespace dicomlink {

/// Bytes of a message without a picture, and of a picture's coded data.
inline constexpr qint64 MostPlain = 8 << 20;
inline constexpr qint64 MostFrame = 48 << 20;
inline constexpr qint64 MostMessage = MostFrame + MostPlain;
/// Objects that a server may name in answer to one question, and bytes of each of their texts.
inline constexpr int MostMatches = 10'000;
inline constexpr int LongestText = 256;
/// Entries of a worklist for one patient and day, and elements of each with its items.
inline constexpr int MostScheduled = 500;
inline constexpr int MostElements = 400;
/// Objects in a report of storage commitment.
inline constexpr int MostReported = 2'000;

enum Key : int {
    RequestKey, ///< `Request`.
    // Of a request.
    HostKey,           ///< Text.
    PortKey,           ///< Integer.
    CalledKey,         ///< Title: bytes.
    CallingKey,        ///< The same.
    ConnectSecondsKey, ///< Integer: how long a connection may take;
    AgreeSecondsKey,   ///< then an association, or its end;
    AnswerSecondsKey,  ///< an answer, and any silence of the network.
    ElementsKey,       ///< Array of arrays: tag as integer, VR and value as bytes, items as arrays of the like.
    AuthorityKey,      ///< Path: text. Without it nothing is encrypted.
    CertificateKey,    ///< The same, of the station's own certificate and of its key; empty: there is none.
    PrivateKeyKey,
    ContentKey,     ///< `Content`.
    FrameKey,       ///< Bytes of the content.
    PathKey,        ///< Path: text. Of a movie, in place of the bytes.
    StudyKey,       ///< Identifier: bytes.
    SeriesKey,      ///< The same; without it a study is asked for, not pictures.
    ServiceKey,     ///< `Service`: what a server is asked for.
    UidKey,         ///< Identifier of a performed step: bytes.
    WaitSecondsKey, ///< Integer: how long a report is waited for.
    // Of an answer.
    FaultKey,   ///< `Fault`.
    StatusKey,  ///< Integer: the server's own; of a rejected association its reason with the source in the upper byte.
    CommentKey, ///< Bytes: the server's own, or dcmtk's of what is wrong.
    SilentKey,  ///< Boolean: it ended by a silence that was too long.
    MatchesKey, ///< Array of arrays of bytes: study, patient's number, name, character set; or picture, number.
    ObjectKey,  ///< Bytes: an object file's content.
    TakenKey,   ///< Array of arrays of bytes: class, transfer syntax, as they have been agreed.
    ScheduledKey,   ///< Array of the elements of each entry of a worklist, as in `ElementsKey`, texts bounded.
    TransactionKey, ///< Bytes: of a report of storage commitment; left away without one.
    CommittedKey,   ///< Array of arrays: class and identifier of an object as bytes;
    FailedKey,      ///< the same, and the reason as an integer.
};

/// What an object holds beside its elements.
enum class Content {
    Nothing,
    Jpeg,     ///< The one frame, as it is.
    Pixels,   ///< The one frame, decoded: eight bits a sample, the samples of a pixel side by side.
    Document, ///< An encapsulated document.
    Movie,    ///< MPEG-4 AVC/H.264 High Profile / Level 4.1.
};

enum class Request {
    Open,
    Store,
    Find,
    Echo,
    Abilities,
    Make,
    Close,
    // Each of these on an association of its own.
    Reach,     ///< Whether the server is there and offers `ServiceKey`.
    Scheduled, ///< Asks the worklist by `ElementsKey`.
    Create,    ///< Makes the performed step `UidKey` of `ElementsKey`;
    Set,       ///< changes it.
    Commit,    ///< Asks for commitment by `ElementsKey`; a report that comes in `WaitSecondsKey` is in the answer.
    // Of the process that listens.
    Listen, ///< At `PortKey`.
    Report, ///< Answers the report before with `StatusKey`, and waits for the next one.
};

enum class Service { Worklist, Steps, Commitment };

enum class Fault {
    None,        ///< The server has answered, or the object is made.
    Unreachable, ///< No connection, or no association on it.
    Rejected,    ///< The server lets this station in at no time;
    Busy,        ///< not now.
    NoContext,   ///< The server takes no such object or question.
    Gone,        ///< The connection had ended before anything was asked.
    Broken,      ///< It ended, or fell silent, behind the question.
    Untrusted,   ///< No encrypted connection: the server's certificate, or that it takes this station's.
    NoKeys,      ///< A file of the encryption can't be read, or isn't what it should be.
    Invalid,     ///< The request can't be understood, or no object comes of it.
};

/// A whole number of an answer; `otherwise` for anything else, such as a fraction that no whole number can hold.
inline qint64 IntegerOf(const QCborValue& value, qint64 otherwise)
{
    return value.isInteger() ? value.toInteger() : otherwise;
}

} // namespace dicomlink
