// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/advanceddialog.h"

#include <QRegExp>
#include <QString>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>

#include <memory>

namespace Ui {
class LibraryEvaluationRulesDialog;
}

/// An editor for the library rules: one "<name>: <pattern>" a line, the patterns coloured.
///
/// The caller sets the rules, runs the dialog and, when it was accepted, saves `rules()` and evaluates the libraries if
/// `isEvaluationRequested()`. Owner: the stack of a command. Thread: GUI.
class LibraryEvaluationRulesDialog : public AdvancedDialog
{
    Q_OBJECT

public:
    class SyntaxHighlighter;

    explicit LibraryEvaluationRulesDialog(QWidget* parent = nullptr);
    ~LibraryEvaluationRulesDialog() override;

    void setRules(const QString& rules);
    /// What the editor holds now, lines ended by "\n".
    QString rules() const;
    bool isEvaluationRequested() const { return m_isEvaluationRequested; }

public slots:
    /// Drops the edits.
    void resetRules();
    void setEvaluationRequested();

protected:
    void showEvent(QShowEvent* event) override;

private:
    std::unique_ptr<Ui::LibraryEvaluationRulesDialog> m_ui;
    QString m_rules;
    bool m_isEvaluationRequested = false;
};

/// Colours what follows the first colon of a rule. Owner: the document that it colours. Thread: GUI.
class LibraryEvaluationRulesDialog::SyntaxHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT

public:
    explicit SyntaxHighlighter(QTextDocument* document);

protected:
    void highlightBlock(const QString& text) override;

private:
    QRegExp m_rulePattern;
    QTextCharFormat m_patternFormat;
};
