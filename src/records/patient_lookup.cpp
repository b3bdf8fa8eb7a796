#include "records/patient_lookup.h"

#include "records/Statement.h"
#include "text/date_routines.h"
#include "text/text_routines.h"

using namespace Qt::StringLiterals;

PatientRecordFields PatientRecord;

namespace {

QString NormalisedRate(const QString& text)
{
    if (!IsNumericText(text))
        return u"0"_s;
    return WholeNumber(text) > 100 ? u"100"_s : WholeNumberText(text);
}

Statement PatientStatement(const QString& chart)
{
    return Statement(u" SELECT wj_suname, wj_jumin, wj_tel, wj_post, wj_bunji, wj_gongje, ")
        .Piece(u" wj_fymd, wj_lymd, wj_chamgo , wj_kwamok, wj_jinchal, wj_xray, ")
        .Piece(u" wj_ibdc, wj_wedc, wj_mansung, wj_hptel, wj_email, wj_etc1, ")
        .Piece(u" wj_etc2, wj_etc3, bh_chymd, bh_yuhyung, ")
        .Piece(u" bh_saupkiho, bh_kwange, ")
        .Piece(u" bh_piboname, bh_pibojumin, bh_jungno, bh_yuhyung, bh_jongbl, ")
        .Piece(u" bh_upchemyung, bh_sagoymd, bh_sungkiho, bh_okymd ")
        .Piece(u" FROM wj, bh ")
        .Piece(u" WHERE wj_chart = bh_chart ")
        .Quoted(u" AND bh_chart = '", chart);
}

/// The newest insurance row valid on the date, else the newest of all; null when the chart has none.
std::unique_ptr<AdoRecordset> PatientRow(const QString& chart, const QString& yuhyung, const QString& ymd)
{
    Statement valid = PatientStatement(chart);
    valid.Then(u" AND bh_chymd <= '", ymd).Piece(u"'  ");
    if (!Trim(yuhyung).isEmpty())
        valid.Then(u" and bh_yuhyung = '", yuhyung).Piece(u"'  ");
    valid.Piece(u" ORDER BY  bh_chymd  desc ");
    auto rows = OpenRows(valid, adOpenKeyset);
    if (HasRow(*rows))
        return rows;
    rows->Close();
    rows = OpenRows(PatientStatement(chart).Piece(u" ORDER BY  bh_chymd  desc "), adOpenKeyset);
    return HasRow(*rows) ? std::move(rows) : nullptr;
}

/// Gives the workplace's discount rate; empty when the workplace isn't known.
QString ReadWorkplace(PatientRecordFields& patient)
{
    const auto rows = OpenRows(
        Statement(u" SELECT jh_saupmyung, jh_hal FROM jh ").Quoted(u" WHERE jh_saupkiho = '", patient.Saupkiho),
        adOpenKeyset);
    if (!HasRow(*rows))
        return {};
    patient.Saupmyung = FieldText(*rows, u"jh_saupmyung"_s);
    return NormalisedRate(FieldText(*rows, u"jh_hal"_s));
}

QString Verdict(const PatientRecordFields& patient, const QString& ymd)
{
    if (Trim(patient.Yuhyung).isEmpty())
        return u"Y 유형이 없습니다. 확인하세요."_s;
    if (Trim(patient.Jumin).isEmpty())
        return u"Y 주민번호가 없습니다. \r\n주민번호를 확인하세요."_s;
    if (patient.Yuhyung == u"05"_s && Trim(patient.Jongbl).isEmpty())
        return u"Y 의료급여 종별이 없습니다. \r\n의료급여 종별을 확인하세요."_s;
    if (patient.Yuhyung != u"04"_s && Trim(patient.Saupkiho).isEmpty())
        return u"Y 사업장기호가 없습니다. \r\n사업장기호를 확인하세요."_s;
    if (Trim(patient.Chymd) > Trim(ymd))
        return u"Y "_s + LayIntoMask(ymd, u"000년 00월 00일") + u" 이후에 등록되었습니다. \r\n적용일자를 확인하세요."_s;
    return {};
}

/// By the seventh character of a resident number.
QString CenturyOf(const QString& jumin)
{
    const QString digit = jumin.mid(6, 1);
    if (digit == u"9"_s || digit == u"0"_s)
        return u"18"_s;
    return !digit.isEmpty() && u"3478"_s.contains(digit) ? u"20"_s : u"19"_s;
}

} // namespace

bool HasPatientRow(const QString& chart)
{
    return HasRow(*OpenRows(Statement(u" SELECT wj_chart FROM wj ").Quoted(u" WHERE wj_chart = '", chart)));
}

QString AddressText(const PatientRecordFields& patient)
{
    const QString post = Trim(patient.Post);
    if (post.isEmpty())
        return {};
    const auto rows = OpenRows(Statement(u" SELECT pt_myung FROM pt ").Quoted(u" WHERE pt_post = '", post));
    return HasRow(*rows) ? FieldText(*rows, u"pt_myung"_s) + u' ' + patient.Bunji : QString();
}

QString LookupPatient(const QString& chart, const QString& yuhyung, PatientRecordFields& patient, const QString& ymd)
{
    const auto row = PatientRow(chart, yuhyung, ymd);
    if (row == nullptr)
        return u"N 인적사항이 없습니다. 확인하세요. "_s;

    const auto field = [&row](const QString& column) { return FieldText(*row, column); };
    patient.Chart = chart;
    patient.Suname = field(u"wj_suname"_s);
    patient.Jumin = field(u"wj_jumin"_s);
    patient.Gongje = field(u"wj_gongje"_s);
    patient.Chamgo = field(u"wj_chamgo"_s);
    patient.Yuhyung = field(u"bh_yuhyung"_s);
    patient.Saupkiho = field(u"bh_saupkiho"_s);
    const QString discount = ReadWorkplace(patient);
    patient.Tel = field(u"wj_tel"_s);
    patient.Post = field(u"wj_post"_s);
    patient.Bunji = field(u"wj_bunji"_s);
    patient.Fymd = field(u"wj_fymd"_s);
    patient.Lymd = field(u"wj_lymd"_s);
    patient.Jinchal = field(u"wj_jinchal"_s);
    patient.Xray = field(u"wj_xray"_s);
    patient.Ibdc = NormalisedRate(field(u"wj_ibdc"_s));
    patient.Wedc = NormalisedRate(field(u"wj_wedc"_s));
    if (discount > u"0"_s) {
        if (patient.Ibdc == u"0"_s)
            patient.Ibdc = discount;
        if (patient.Wedc == u"0"_s)
            patient.Wedc = discount;
    }
    patient.Etc1 = field(u"wj_etc1"_s);
    patient.Mansung = field(u"wj_mansung"_s);
    patient.Kwamok = field(u"wj_kwamok"_s);
    patient.Chymd = field(u"bh_chymd"_s);
    patient.Kwange = field(u"bh_kwange"_s);
    patient.Piboname = field(u"bh_piboname"_s);
    patient.Pibojumin = field(u"bh_pibojumin"_s);
    patient.Jungno = field(u"bh_jungno"_s);
    patient.Jongbl = LayIntoMask(field(u"bh_jongbl"_s), u"0");
    patient.Upchemyung = field(u"bh_upchemyung"_s);
    patient.Sagoymd = field(u"bh_sagoymd"_s);
    patient.Sungkiho = field(u"bh_sungkiho"_s);
    patient.Okymd = field(u"bh_okymd"_s);
    return Verdict(patient, ymd);
}

QString AgeText(const QString& ymd, const QString& jumin)
{
    if (!DateFromText(ymd).isValid())
        return {};
    if (!IsNumericText(jumin))
        return u"000 00"_s;
    const QString monthDay = ymd.mid(4, 4);
    const QString birthday = jumin.mid(2, 4);

    int years = ymd.left(4).toInt() - (CenturyOf(jumin) + jumin.left(2)).toInt();
    int months = monthDay.left(2).toInt() - birthday.left(2).toInt();
    if (birthday > monthDay) {
        years -= 1;
        months = 12 - (birthday.left(2).toInt() - monthDay.left(2).toInt());
    }
    return LayIntoMask(QString::number(years), u"000") + u' ' + QString::number(months);
}

QString SexText(const QString& jumin)
{
    const QString digit = Trim(jumin.mid(6, 1));
    return !digit.isEmpty() && u"13579"_s.contains(digit) ? u"M"_s : u"F"_s;
}

QString BirthText(const QString& jumin)
{
    constexpr qsizetype CenturyAt = 6;
    if (jumin.size() <= CenturyAt || !IsNumericText(jumin))
        return {};
    const QString ymd = CenturyOf(jumin) + jumin.left(CenturyAt);
    return DateFromText(ymd).isValid() ? ymd : QString();
}
