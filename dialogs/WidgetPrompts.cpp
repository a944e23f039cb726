#include "dialogs/WidgetPrompts.h"

#include "base/PathRules.h"
#include "dialogs/AddProjFrm.h"
#include "dialogs/ImageDlgFrm.h"

#include <QMessageBox>

namespace Corvadine {

namespace {

QMessageBox::StandardButton Ask(QMessageBox::Icon icon, const QString& title, QString text,
    QMessageBox::StandardButtons buttons, QWidget* window)
{
    text.replace(u"\r\n"_s, u"\n"_s); // QLabel would show the CR
    QMessageBox box(icon, title, text, buttons, window);
    box.setTextFormat(Qt::PlainText);
    if (buttons.testFlag(QMessageBox::No))
        box.setDefaultButton(QMessageBox::No); // the action cannot be undone
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

void ShowErrorOver(QWidget* window, const QString& text)
{
    Ask(QMessageBox::Critical, u"Error"_s, text, QMessageBox::Ok, window);
}

} // namespace

void TWidgetPrompts::ShowError(const QString& text)
{
    ShowErrorOver(FWindow, text);
}

void TWidgetPrompts::Inform(const QString& text)
{
    Ask(QMessageBox::Information, u"Information"_s, text, QMessageBox::Ok, FWindow);
}

bool TWidgetPrompts::Confirm(const QString& text)
{
    const auto buttons = QMessageBox::Yes | QMessageBox::No;
    return Ask(QMessageBox::Question, u"Confirm"_s, text, buttons, FWindow) == QMessageBox::Yes;
}

std::optional<QString> TWidgetPrompts::ChooseProjectFile()
{
    TAddProjForm form(FWindow, FProjectFolder);
    QObject::connect(&form, &TAddProjForm::Refused, &form,
        [&form](const QString& reason) { ShowErrorOver(&form, reason); });
    if (Run(form) != QDialog::Accepted)
        return std::nullopt;
    FProjectFolder = FolderOf(form.ProjectFile());
    return form.ProjectFile();
}

std::optional<QString> TWidgetPrompts::ChooseImage(const QString& startFolder)
{
    TImageDlgForm form(FWindow, startFolder);
    if (Run(form) != QDialog::Accepted)
        return std::nullopt;
    return form.SelectedFile;
}

// The dialog blocks the main window, but not the help window.
int TWidgetPrompts::Run(QDialog& form) const
{
    AnswerHelpKey(form, FHelp);
    form.setWindowModality(Qt::WindowModal);
    return form.exec();
}

} // namespace Corvadine
