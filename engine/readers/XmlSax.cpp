// libxml2's push parser behind XmlHandler.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/XmlSax.h"

#include "engine/readers/HtmlEntities.h"
#include "engine/readers/Limits.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <unordered_map>
#include <utility>
#include <vector>

namespace engine {
namespace {

constexpr std::size_t kPiece = std::size_t{64} * 1024; // the parser's own buffers stay small
constexpr std::size_t kLongestEntity = 4096;
constexpr std::size_t kMostEntities = 10'000;
constexpr std::size_t kMostEntityText = std::size_t{1024} * 1024; // put in for references, in all

std::string_view View(const xmlChar* text) {
    return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

std::string_view Value(const unsigned char* const* attribute) {
    const auto* begin = reinterpret_cast<const char*>(attribute[3]);
    return {begin, static_cast<std::size_t>(attribute[4] - attribute[3])};
}

bool Equal(const xmlChar* text, std::string_view expected) {
    return std::strncmp(reinterpret_cast<const char*>(text), expected.data(), expected.size()) ==
               0 &&
           text[expected.size()] == 0;
}

// The parser leaves references in attributes as they are; "&" itself comes as "&#38;".
std::string AttributeText(std::string_view value) {
    return value.find('&') == std::string_view::npos ? std::string(value) : DecodeReferences(value);
}

} // namespace

struct XmlParser::State {
    XmlHandler& handler;
    xmlParserCtxtPtr context = nullptr;
    std::exception_ptr thrown;
    std::string problem;
    bool stopped = false;
    int depth = 0;
    int skipFrom = 0; // depth of the element that is passed over, 0 none
    struct Open {
        std::string_view space, name; // in the parser's dictionary
    };
    std::vector<Open> open;
    std::unordered_map<std::string, std::string> entities;
    std::size_t entityText = 0;
    xmlEntity literal{}; // handed to the parser for a reference, filled anew each time
    std::string literalText;

    explicit State(XmlHandler& to) : handler(to) {}
    ~State() {
        if (context == nullptr)
            return;
        xmlFreeDoc(context->myDoc);
        context->myDoc = nullptr;
        xmlFreeParserCtxt(context);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    // An exception may not pass through the C library: it is kept and thrown again by Feed.
    template <typename Call> void Guarded(const Call& call) {
        if (stopped)
            return;
        // In a malformed document the parser would otherwise leave out "&amp;" and the like.
        context->wellFormed = 1;
        try {
            call();
        } catch (...) {
            thrown = std::current_exception();
            Stop();
        }
    }
    void Stop() {
        stopped = true;
        xmlStopParser(context);
    }
    void Malformed(int line) {
        if (problem.empty())
            problem = "is malformed at line " + std::to_string(line);
    }
    void Start(const XmlElement& element) {
        if (++depth > kMaxXmlDepth) {
            problem = "is nested too deeply";
            Stop();
            return;
        }
        open.push_back({element.space, element.name});
        if (skipFrom == 0 && !handler.Start(element))
            skipFrom = depth;
    }
    void End() {
        if (open.empty())
            return;
        const auto [space, name] = open.back();
        open.pop_back();
        const bool skipped = skipFrom != 0;
        if (skipFrom == depth)
            skipFrom = 0;
        --depth;
        if (!skipped)
            handler.End(space, name);
    }
    void Text(std::string_view text) {
        if (skipFrom == 0 && depth > 0)
            handler.Text(text);
    }
    void Declare(const xmlChar* name, const xmlChar* content) {
        const std::string_view value = View(content);
        if (entities.size() >= kMostEntities || value.size() > kLongestEntity ||
            value.find('<') != std::string_view::npos)
            return;
        entities.emplace(View(name), DecodeReferences(value));
    }
    xmlEntityPtr Resolve(const xmlChar* name);
};

namespace {

using State = XmlParser::State;

State& Of(void* user) {
    return *static_cast<State*>(user);
}

void OnText(void* user, const xmlChar* text, int length) {
    State& state = Of(user);
    state.Guarded([&] {
        state.Text({reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
    });
}

void OnEnd(void* user, const xmlChar* /*name*/, const xmlChar* /*prefix*/, const xmlChar* /*uri*/) {
    State& state = Of(user);
    state.Guarded([&] { state.End(); });
}

void OnEntity(void* user, const xmlChar* name, int type, const xmlChar* /*publicId*/,
              const xmlChar* /*systemId*/, xmlChar* content) {
    if (type != XML_INTERNAL_GENERAL_ENTITY)
        return;
    State& state = Of(user);
    state.Guarded([&] { state.Declare(name, content); });
}

xmlEntityPtr OnReference(void* user, const xmlChar* name) {
    State& state = Of(user);
    xmlEntityPtr entity = nullptr;
    state.Guarded([&] { entity = state.Resolve(name); });
    return entity;
}

void OnError(void* user, xmlErrorPtr error) {
    State& state = Of(user);
    // Unknown names lose that reference only; bad characters are replaced.
    if (error->level < XML_ERR_ERROR || error->domain == XML_FROM_NAMESPACE ||
        error->code == XML_ERR_UNDECLARED_ENTITY || error->code == XML_WAR_UNDECLARED_ENTITY)
        return;
    if (error->code == XML_ERR_NO_MEMORY) {
        state.thrown = std::make_exception_ptr(std::bad_alloc());
        state.Stop();
        return;
    }
    if (!state.stopped)
        state.Malformed(error->line);
}

} // namespace

xmlEntityPtr XmlParser::State::Resolve(const xmlChar* name) {
    if (context->inSubset != 0)
        return nullptr;
    const auto found = entities.find(std::string(View(name)));
    literalText = found != entities.end() ? found->second : NamedCharacter(View(name));
    if (literalText.empty())
        return nullptr;
    // In an attribute the reference stays, to be decoded with the value; in text the parser puts
    // in what it takes for a predefined entity.
    const bool inAttribute = context->instate == XML_PARSER_ATTRIBUTE_VALUE;
    entityText += literalText.size();
    if (entityText > kMostEntityText)
        return nullptr;
    static xmlChar noOriginal[] = "";
    literal = xmlEntity{};
    literal.type = XML_ENTITY_DECL;
    literal.etype = inAttribute ? XML_INTERNAL_GENERAL_ENTITY : XML_INTERNAL_PREDEFINED_ENTITY;
    literal.name = name;
    literal.content = reinterpret_cast<xmlChar*>(literalText.data());
    literal.length = static_cast<int>(literalText.size());
    literal.orig = noOriginal;
    literal.checked = 2; // looked into, and no tag in it
    return &literal;
}

std::string XmlElement::Attribute(std::string_view attribute) const {
    return Attribute({}, attribute);
}

std::string XmlElement::Attribute(std::string_view spaceEnding, std::string_view attribute) const {
    for (int i = 0; i < m_count; ++i) {
        const unsigned char* const* entry = m_attributes + std::ptrdiff_t{i} * 5;
        if (!Equal(entry[0], attribute) ||
            (!spaceEnding.empty() && !View(entry[2]).ends_with(spaceEnding)))
            continue;
        return AttributeText(Value(entry));
    }
    return {};
}

XmlParser::XmlParser(XmlHandler& handler, bool knownUtf8)
    : m_state(std::make_unique<State>(handler)) {
    static const bool initialised = (xmlInitParser(), true);
    (void)initialised;
    xmlSAXHandler sax{};
    sax.initialized = XML_SAX2_MAGIC;
    sax.characters = OnText;
    sax.ignorableWhitespace = OnText;
    sax.cdataBlock = OnText;
    sax.endElementNs = OnEnd;
    sax.entityDecl = OnEntity;
    sax.getEntity = OnReference;
    sax.serror = OnError;
    // A lambda of the class may fill in XmlElement.
    sax.startElementNs = [](void* user, const xmlChar* name, const xmlChar* /*prefix*/,
                            const xmlChar* uri, int /*spaces*/, const xmlChar** /*declared*/,
                            int attributes, int /*defaulted*/, const xmlChar** values) {
        State& state = Of(user);
        state.Guarded([&] {
            XmlElement element;
            element.space = View(uri);
            element.name = View(name);
            element.m_attributes = values;
            element.m_count = attributes;
            state.Start(element);
        });
    };
    m_state->context = xmlCreatePushParserCtxt(&sax, m_state.get(), nullptr, 0, nullptr);
    if (m_state->context == nullptr)
        throw std::bad_alloc();
    const int options =
        XML_PARSE_NONET | XML_PARSE_RECOVER | (knownUtf8 ? XML_PARSE_IGNORE_ENC : 0);
    xmlCtxtUseOptions(m_state->context, options);
}

XmlParser::~XmlParser() = default;

void XmlParser::Feed(std::string_view piece) {
    while (!piece.empty() && !m_state->stopped) {
        const std::size_t length = std::min(piece.size(), kPiece);
        xmlParseChunk(m_state->context, piece.data(), static_cast<int>(length), 0);
        piece.remove_prefix(length);
        if (m_state->context->instate == XML_PARSER_EOF && m_state->problem.empty())
            m_state->Malformed(m_state->context->input != nullptr ? m_state->context->input->line
                                                                  : 0);
        m_state->stopped = m_state->stopped || m_state->context->instate == XML_PARSER_EOF;
    }
    if (m_state->thrown)
        std::rethrow_exception(m_state->thrown);
}

void XmlParser::Finish() {
    if (!m_state->stopped)
        xmlParseChunk(m_state->context, nullptr, 0, 1);
    if (m_state->thrown)
        std::rethrow_exception(m_state->thrown);
    while (!m_state->open.empty())
        m_state->End();
}

const std::string& XmlParser::Problem() const {
    return m_state->problem;
}

} // namespace engine
