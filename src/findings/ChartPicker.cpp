#include "findings/ChartPicker.h"

#include "findings/popup_window.h"
#include "frame/guard.h"
#include "records/Statement.h"
#include "text/text_routines.h"

#include <QApplication>
#include <QDialog>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int MostReports = 200;
constexpr qsizetype MostWords = 20;

/// A word as a pattern that stands for itself.
QString Pattern(QString word)
{
    for (const QChar special : {u'|', u'%', u'_'})
        word.replace(special, QString(u'|') + special);
    return word;
}

Statement FindingsWith(const QString& text)
{
    QStringList words = text.simplified().split(u' ', Qt::SkipEmptyParts);
    words.removeDuplicates();
    Statement statement(u"SELECT caso_yeonno, caso_chart, caso_suname, caso_ymd, caso_etc, caso_sogyon FROM caso ");
    QString joint = u"WHERE"_s;
    for (const QString& word : words.first(qMin(words.size(), MostWords))) {
        statement.Piece(joint).Then(u" caso_sogyon LIKE '%", Pattern(word)).Piece(u"%' ESCAPE '|' ");
        joint = u"AND"_s;
    }
    return statement.Then(u"ORDER BY caso_ymd DESC, caso_yeonno DESC LIMIT ", MostReports);
}

} // namespace

void ChartPicker::Soapp(const ClientSetupRecord& /*setup*/, ConnectionPointer& connection, const QString& text,
                        int /*mode*/)
{
    QDialog dialog(QApplication::activeWindow());
    dialog.setObjectName(u"chartPicker"_s);
    dialog.setWindowTitle(u"과거소견"_s);
    dialog.resize(560, 380);
    auto* list = new QListWidget(&dialog);
    list->setObjectName(u"reports"_s);
    list->setAccessibleName(u"과거소견 목록"_s);
    auto* shown = new QPlainTextEdit(&dialog);
    shown->setObjectName(u"findings"_s);
    shown->setAccessibleName(u"소견내용"_s);
    shown->setReadOnly(true);
    shown->setPlaceholderText(u"같은 낱말이 있는 소견이 없습니다."_s);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(list, 1);
    layout->addWidget(shown, 1);

    QStringList findings;
    const auto rows = connection->Execute(FindingsWith(text).Text());
    for (; !rows->Eof(); rows->MoveNext()) {
        findings << rows->Fields(u"caso_sogyon"_s).toString();
        list->addItem(u"%1  %2  %3  %4  %5"_s.arg(LayIntoMask(FieldText(*rows, u"caso_ymd"_s), u"0000-00-00"),
                                                  LayIntoMask(FieldText(*rows, u"caso_yeonno"_s), u"0000-000000"),
                                                  FieldText(*rows, u"caso_chart"_s), FieldText(*rows, u"caso_suname"_s),
                                                  FieldText(*rows, u"caso_etc"_s)));
    }
    QObject::connect(list, &QListWidget::currentRowChanged, shown,
                     GuardedSlot([&findings, shown](int row) { shown->setPlainText(findings.value(row)); }));
    list->setCurrentRow(0);
    PlacePopup(dialog, m_left, m_top);
    dialog.exec();
}
