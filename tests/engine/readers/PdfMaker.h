// Makes small PDF files for tests, with the fonts that every reader has.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace engine {

// Objects 1 (catalog), 2 (page tree) and 3 (Courier, with a
// soft hyphen at octal 310) stand; pages and what else is added follow.
class PdfMaker {
  public:
    // Returns the number of the new object.
    int Add(const std::string& body) {
        m_objects.push_back(body);
        return kFirst + static_cast<int>(m_objects.size()) - 1;
    }
    int AddStream(const std::string& dictionary, const std::string& data) {
        return Add("<<" + dictionary + "/Length " + std::to_string(data.size()) + ">>\nstream\n" +
                   data + "\nendstream");
    }
    // A page of 400 by 400 points that shows content; extra goes into its dictionary.
    void AddPage(const std::string& content, const std::string& extra = "",
                 const std::string& resources = "") {
        const int stream = AddStream("", content);
        m_pages.push_back(Add("<</Type/Page/Parent 2 0 R/MediaBox[0 0 400 400]/Contents " +
                              std::to_string(stream) + " 0 R/Resources<</Font<</F 3 0 R>>" +
                              resources + ">>" + extra + ">>"));
    }
    // Lines of text, one below the other, from the upper left corner.
    static std::string Lines(const std::vector<std::string>& lines) {
        std::string content = "BT /F 10 Tf 12 TL 20 360 Td ";
        for (const std::string& line : lines)
            content += "(" + line + ") Tj T* ";
        return content + "ET";
    }
    std::string catalogExtra;
    std::string info; // entries of the information dictionary

    [[nodiscard]] std::string Make() const {
        std::string kids;
        for (const int page : m_pages)
            kids += std::to_string(page) + " 0 R ";
        std::vector<std::string> objects = {
            "<</Type/Catalog/Pages 2 0 R" + catalogExtra + ">>",
            "<</Type/Pages/Kids[" + kids + "]/Count " + std::to_string(m_pages.size()) + ">>",
            "<</Type/Font/Subtype/Type1/BaseFont/Courier/Encoding<</Type/Encoding"
            "/BaseEncoding/WinAnsiEncoding/Differences[200/uni00AD]>>>>"};
        objects.insert(objects.end(), m_objects.begin(), m_objects.end());
        std::string file = "%PDF-1.7\n";
        std::string table;
        for (std::size_t i = 0; i < objects.size(); ++i) {
            std::string offset = std::to_string(file.size());
            offset.insert(0, 10 - offset.size(), '0');
            table += offset + " 00000 n \n";
            file += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
        }
        const std::string count = std::to_string(objects.size() + 1);
        const std::string start = std::to_string(file.size());
        return file + "xref\n0 " + count + "\n0000000000 65535 f \n" + table + "trailer\n<</Size " +
               count + "/Root 1 0 R/Info<<" + info + ">>>>\nstartxref\n" + start + "\n%%EOF\n";
    }

  private:
    static constexpr int kFirst = 4;
    std::vector<std::string> m_objects;
    std::vector<int> m_pages;
};

} // namespace engine
