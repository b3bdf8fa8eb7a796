#include "admin/check_abilities.h"

#include "frame/components.h"
#include "identifiers/dicom_uids.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Kinds of objects that this setup sends.
struct Wanted
{
    QString classUid;
    QString name;
    bool isSent = false;
};

QList<Wanted> WantedKinds(const PacsSetupRecord& pacs)
{
    QList<Wanted> wanted;
    using enum DicomModality;
    for (const DicomModality modality : {Endoscopy, Ultrasound, Microscopy, Photography}) {
        const bool isSent = modality == Endoscopy || std::ranges::any_of(pacs.Kinds, [modality](const auto& each) {
                                return each.second.modality == modality;
                            });
        wanted.append({ClassUidOf(modality), u"그림(%1)"_s.arg(WordOf(modality)), isSent});
    }
    wanted.append({ClassUidOf(DicomSeries::Reports), u"결과지(PDF)"_s, pacs.SendsReports});
    wanted.append({ClassUidOf(DicomSeries::Movies), u"동영상(MPEG-4)"_s, pacs.SendsMovies});
    wanted.append({ClassUidOf(DicomSeries::Rejections), u"삭제 통지"_s, pacs.Rejects});
    return wanted;
}

QString HowTaken(const DicomAbilities& abilities, const QString& classUid)
{
    const auto kind = std::ranges::find(abilities.kinds, classUid, &DicomAbilities::Kind::classUid);
    if (kind == abilities.kinds.end() || (!kind->asItIs && !kind->uncompressed))
        return u"받지 않음"_s;
    return kind->asItIs ? u"받음"_s : u"비압축으로만 받음"_s;
}

} // namespace

CheckLines CheckAbilities(const PacsSetupRecord& pacs)
{
    DicomAbilities abilities;
    const auto kit = CreateObject<DicomKit>(QString::fromUtf16(DicomKitName));
    if (kit->Abilities(pacs.Server(), abilities, {}).kind != DicomOutcome::Accepted)
        return {};
    QStringList found;
    QStringList missing;
    for (const Wanted& each : WantedKinds(pacs)) {
        const QString how = HowTaken(abilities, each.classUid);
        found << each.name + u' ' + how;
        if (each.isSent && how == u"받지 않음"_s)
            missing << each.name;
    }
    found << (abilities.answersQuestions ? u"조회 됨"_s : u"조회 안 됨"_s)
          << (abilities.isEncrypted ? u"암호화됨(TLS)"_s : u"암호화 안 됨"_s);
    CheckLine line{CheckLine::Right, u"PACS 서버가 받는 것"_s, found.join(u", "_s), {}};
    if (!missing.isEmpty()) {
        line.verdict = CheckLine::Wrong;
        line.toDo = u"%1을(를) 받도록 PACS 서버를 설정하거나 [Pacs]에서 끄십시오"_s.arg(missing.join(u", "_s));
    }
    return {line};
}
