// XML as a stream of elements and text, from pieces of a document as they come.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace engine {

// An element's beginning; valid during XmlHandler::Start.
class XmlElement {
  public:
    std::string_view space; // namespace URI, empty where there is none
    std::string_view name;  // without prefix

    [[nodiscard]] bool HasAttributes() const { return m_count > 0; }
    // The value of the first attribute of that name in any namespace, or empty.
    [[nodiscard]] std::string Attribute(std::string_view attribute) const;
    // The same for one namespace, known by how its URI ends.
    [[nodiscard]] std::string Attribute(std::string_view spaceEnding,
                                        std::string_view attribute) const;

  private:
    friend class XmlParser;
    const unsigned char* const* m_attributes = nullptr; // five pointers each, libxml2's form
    int m_count = 0;
};

// What a reader does with the stream. Every Start that answered true has its End.
class XmlHandler {
  public:
    virtual ~XmlHandler() = default;
    // false: the element is passed over with all that it holds; no End follows.
    [[nodiscard]] virtual bool Start(const XmlElement& element) = 0;
    virtual void End(std::string_view space, std::string_view name) = 0;
    virtual void Text(std::string_view utf8) = 0;
};

// No network, no file, no external entity. Entities that the document declares itself stand
// for plain text and only up to a bound; malformed documents are read as far as they make sense.
class XmlParser {
  public:
    // knownUtf8: the pieces are UTF-8, whatever the document declares.
    explicit XmlParser(XmlHandler& handler, bool knownUtf8 = false);
    ~XmlParser();
    XmlParser(const XmlParser&) = delete;
    XmlParser& operator=(const XmlParser&) = delete;

    // Whatever the handler throws comes out here; the parser is of no use then.
    void Feed(std::string_view piece);
    // Ends the document; elements still open get their End.
    void Finish();
    // Empty, or a clause such as "is malformed at line 12".
    [[nodiscard]] const std::string& Problem() const;

    struct State;

  private:
    std::unique_ptr<State> m_state;
};

// Reads a whole document in any charset. Returns XmlParser::Problem.
[[nodiscard]] std::string ReadXmlInto(std::string_view bytes, XmlHandler& handler);

} // namespace engine
