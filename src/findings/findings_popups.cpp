#include "findings/findings_popups.h"

#include "frame/components.h"
#include "frame/controls.h"
#include "frame/forms.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/twips.h"
#include "records/Statement.h"
#include "text/text_routines.h"

#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QScreen>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

/// Puts a popup where its caller wants it, in twips from the corner of its parent, but wholly on the screen.
void PlacePopup(QDialog& popup, int leftTwips, int topTwips)
{
    const QWidget* parent = popup.parentWidget();
    const QPoint corner = parent != nullptr ? parent->mapToGlobal(QPoint()) : QPoint();
    const QRect place(corner + QPoint(PixelsFromTwips(leftTwips), PixelsFromTwips(topTwips)), popup.size());
    popup.move(MovedInside(place, popup.screen()->availableGeometry()).topLeft());
}

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
    auto* list = Named(new QListWidget(&dialog), u"reports"_s, u"과거소견 목록"_s);
    auto* shown = Named(new QPlainTextEdit(&dialog), u"findings"_s, u"소견내용"_s);
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

namespace {

constexpr int CodeRole = Qt::UserRole;
/// Stands before the code that is handed back.
constexpr char16_t Prefix[] = u"SO";

class PhraseDialog : public QDialog
{
public:
    PhraseDialog() : QDialog(QApplication::activeWindow())
    {
        setObjectName(u"opinionPad"_s);
        setWindowTitle(u"소견문구"_s);
        resize(420, 300);
        m_filter->setPlaceholderText(u"코드나 문구의 일부"_s);
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(m_filter);
        layout->addWidget(m_list);
        m_filter->installEventFilter(this);
        m_list->installEventFilter(this);
        connect(m_filter, &QLineEdit::textChanged, this, GuardedSlot([this](const QString&) { Narrow(); }));
        connect(m_list, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
    }

    void Add(const QString& code, const QString& text)
    {
        auto* item = new QListWidgetItem(code + u"  "_s + text.simplified(), m_list);
        item->setData(CodeRole, code);
        item->setToolTip(ToolTipText(text));
        if (m_list->count() == 1)
            m_list->setCurrentRow(0);
    }

    QString ChosenCode() const
    {
        const QListWidgetItem* item = m_list->currentItem();
        return item != nullptr && !item->isHidden() ? item->data(CodeRole).toString() : QString();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::KeyPress)
            return QDialog::eventFilter(watched, event);
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            accept();
            return true;
        }
        // The arrows move in the list while the words are being typed.
        if (watched == m_filter && (key == Qt::Key_Down || key == Qt::Key_Up)) {
            QApplication::sendEvent(m_list, event);
            return true;
        }
        return QDialog::eventFilter(watched, event);
    }

private:
    void Narrow()
    {
        const QString wanted = m_filter->text().simplified();
        QListWidgetItem* first = nullptr;
        for (int row = 0; row < m_list->count(); ++row) {
            QListWidgetItem* item = m_list->item(row);
            item->setHidden(!item->text().contains(wanted, Qt::CaseInsensitive));
            if (first == nullptr && !item->isHidden())
                first = item;
        }
        m_list->setCurrentItem(first);
    }

    QLineEdit* m_filter = Named(new QLineEdit(this), u"filter"_s, u"소견문구 찾기"_s);
    QListWidget* m_list = Named(new QListWidget(this), u"phrases"_s, u"소견문구 목록"_s);
};

} // namespace

void OpinionPad::Sosearch(const ClientSetupRecord& /*setup*/, ConnectionPointer& connection, const QString& kind,
                          QString& chosen)
{
    PhraseDialog dialog;
    const auto rows = connection->Execute(Statement(u"SELECT so_code, so_myung FROM so ")
                                              .Quoted(u"WHERE so_gubun = '", kind)
                                              .Piece(u"ORDER BY so_code")
                                              .Text());
    for (; !rows->Eof(); rows->MoveNext())
        dialog.Add(rows->Fields(u"so_code"_s).toString(), rows->Fields(u"so_myung"_s).toString());
    PlacePopup(dialog, m_left, m_top);
    const QString code = dialog.exec() == QDialog::Accepted ? dialog.ChosenCode() : QString();
    chosen = code.isEmpty() ? QString() : QString::fromUtf16(Prefix) + code;
}

void RegisterFindingsPopups()
{
    RegisterComponent<clsOpinionPad>(u"prjOpinionPad.clsOpinionPad"_s, [] { return std::make_unique<OpinionPad>(); });
    RegisterComponent<clsChartPicker>(u"prjChartPicker.clsChartPicker"_s,
                                      [] { return std::make_unique<ChartPicker>(); });
}
