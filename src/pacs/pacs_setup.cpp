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
    for (const auto& [number, place] : places)
        parts << QString::number(number) << place.Yoyangno << place.Hospital;
    const QByteArray hash = QCryptographicHash::hash(parts.join(u'\x1f').toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(hash.toHex().left(32));
}
