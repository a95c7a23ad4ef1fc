// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/libraryevaluationrulesdialog.h"

#include "ui_libraryevaluationrulesdialog.h"

#include "ui/lightground.h"
#include "ui/plaintext.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QPushButton>

namespace {

QFont fixedFont(const QFont& dialogFont)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // A desktop that names none has its ordinary font here.
    if (!QFontInfo(font).fixedPitch())
        font = QFont(QStringLiteral("Monospace"));
    font.setPointSizeF(dialogFont.pointSizeF());
    return font;
}

} // namespace

LibraryEvaluationRulesDialog::SyntaxHighlighter::SyntaxHighlighter(QTextDocument* document)
    : QSyntaxHighlighter(document)
    , m_rulePattern(QStringLiteral("^([^:]+):(.*)$"))
{
    m_patternFormat.setFontWeight(QFont::Normal);
    m_patternFormat.setForeground(QColor(QStringLiteral("green")));
}

void LibraryEvaluationRulesDialog::SyntaxHighlighter::highlightBlock(const QString& text)
{
    // Anchored at both ends, the pattern matches a line once or not at all.
    if (m_rulePattern.indexIn(text) >= 0)
        setFormat(m_rulePattern.pos(2), m_rulePattern.cap(2).size(), m_patternFormat);
}

LibraryEvaluationRulesDialog::LibraryEvaluationRulesDialog(QWidget* parent)
    : AdvancedDialog(parent)
    , m_ui(std::make_unique<Ui::LibraryEvaluationRulesDialog>())
{
    m_ui->setupUi(this);
    m_ui->rulesEdit->setFont(fixedFont(font()));
    giveLightGround(m_ui->rulesEdit);
    new SyntaxHighlighter(m_ui->rulesEdit->document());
    QPushButton* saveAllButton = m_ui->buttonBox->button(QDialogButtonBox::SaveAll);
    saveAllButton->setText(QStringLiteral("  %1  ").arg(tr("Save and (Re)Evaluate Libraries")));
    saveAllButton->setIcon(QIcon());
    // Both save buttons accept.
    connect(saveAllButton, &QPushButton::clicked, this, &LibraryEvaluationRulesDialog::setEvaluationRequested);
    connect(m_ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_ui->buttonBox->button(QDialogButtonBox::Reset), &QPushButton::clicked, this,
        &LibraryEvaluationRulesDialog::resetRules);
}

LibraryEvaluationRulesDialog::~LibraryEvaluationRulesDialog() = default;

void LibraryEvaluationRulesDialog::setRules(const QString& rules)
{
    m_rules = rules;
    resetRules();
}

QString LibraryEvaluationRulesDialog::rules() const
{
    return plainTextOf(*m_ui->rulesEdit->document());
}

void LibraryEvaluationRulesDialog::resetRules()
{
    m_ui->rulesEdit->setPlainText(m_rules);
}

void LibraryEvaluationRulesDialog::setEvaluationRequested()
{
    m_isEvaluationRequested = true;
}

void LibraryEvaluationRulesDialog::showEvent(QShowEvent* event)
{
    AdvancedDialog::showEvent(event);
    if (event->spontaneous())
        return;
    m_isEvaluationRequested = false;
    m_ui->rulesEdit->moveCursor(QTextCursor::Start);
    m_ui->rulesEdit->setFocus();
}
