#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class GenerateDialog;
}

//! Asks how large a generated collection shall be.
class GenerateDialog : public QDialog
{
    Q_OBJECT

public:
    explicit GenerateDialog(QWidget* parent = nullptr);
    ~GenerateDialog() override;

    int scenes() const;
    //! In each scene.
    int items() const;
    int audioSources() const;

private:
    std::unique_ptr<Ui::GenerateDialog> ui;
};
