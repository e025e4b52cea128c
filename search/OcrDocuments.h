// The documents whose recognised texts stand in the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>

namespace velmora {

// The rows of tblocrfiles of this user, as they stand at construction.
class OcrDocuments {
  public:
    OcrDocuments();

    // Full logical name of the document that a recognised text belongs to: the text's folder is
    // named by the id of its row. Empty when there is no such row.
    [[nodiscard]] QString GetFileNameByOcrFile(const QString& ocrFileName) const;

  private:
    QHash<qint64, QString> m_names;
};

// Whether a document is the folder or file that was searched, or lies below it. Logical paths;
// without a scope every document does.
bool IsInScope(const QString& documentName, const QString& scope);

} // namespace velmora
