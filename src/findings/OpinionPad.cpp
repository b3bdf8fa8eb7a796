#include "findings/OpinionPad.h"

#include "findings/popup_window.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "records/Statement.h"

#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

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
        m_filter->setObjectName(u"filter"_s);
        m_filter->setAccessibleName(u"소견문구 찾기"_s);
        m_filter->setPlaceholderText(u"코드나 문구의 일부"_s);
        m_list->setObjectName(u"phrases"_s);
        m_list->setAccessibleName(u"소견문구 목록"_s);
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

    QLineEdit* m_filter = new QLineEdit(this);
    QListWidget* m_list = new QListWidget(this);
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
