#include "pacs/pacs_setup.h"

#include <QCryptographicHash>
#include <QStringList>

using namespace Qt::StringLiterals;

QString SetupDigest(const ClientSetupRecord& setup, const SaupRecords& places)
{
    const PacsSetupRecord& pacs = setup.Pacs;
    QStringList parts{setup.CaptureRoot,
                      pacs.Host,
                      QString::number(pacs.Port),
                      pacs.CalledAet,
                      pacs.CallingAet,
                      QString::number(int(pacs.SendsEachStill)),
                      pacs.Institution,
                      pacs.UidRoot,
                      pacs.PatientIdPrefix,
                      QString::number(static_cast<int>(pacs.Characters)),
                      QString::number(int(pacs.HasNameParts))};
    for (const auto& [section, kind] : pacs.Kinds)
        parts << section << QString::number(static_cast<int>(kind.modality)) << kind.bodyPart << kind.laterality;
    for (const auto& [code, section] : pacs.WorklistCodes)
        parts << code << section;
    for (const DicomPeer* peer : {&pacs.Worklist, &pacs.Steps})
        parts << peer->host << QString::number(peer->port) << peer->calledAet << peer->callingAet;
    parts << pacs.BurnedIn << QString::number(pacs.CommitPort);
    for (const bool isOn : {pacs.SendsReports, pacs.SendsMovies, pacs.MovieSound, pacs.Rejects})
        parts << QString::number(int(isOn));
    parts << pacs.Tls.authority << pacs.Tls.certificate << pacs.Tls.key;
    for (const auto& [number, place] : places)
        parts << QString::number(number) << place.Yoyangno << place.Hospital;
    const QByteArray hash = QCryptographicHash::hash(parts.join(u'\x1f').toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(hash.toHex().left(32));
}
