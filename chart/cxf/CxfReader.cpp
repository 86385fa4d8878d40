#include "chart/cxf/CxfReader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <iterator>
#include <map>
#include <optional>
#include <rapidxml/rapidxml.hpp>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Utilities/Tools/Utf8.h"
#include "chart/DeviceValues.h"
#include "chart/cgats/CgatsError.h"
#include "chart/cgats/CgatsFields.h"
#include "chart/colour/Densities.h"
#include "chart/cxf/CxfFile.h"

namespace J4Chart {

namespace Utf8 = Kestrelon::Utilities::Tools::Utf8;

namespace {

using Node = rapidxml::xml_node<char>;

std::string ContentOf(std::istream& input)
{
    std::string content;
    std::array<char, 1 << 16> part;
    while (input.read(part.data(), part.size()) || input.gcount() > 0) {
        content.append(part.data(), static_cast<size_t>(input.gcount()));
        if (content.size() > CxfReader::LargestSize) {
            throw CgatsError(0, "the file is larger than " + std::to_string(CxfReader::LargestSize >> 20) + " MiB");
        }
    }
    if (input.bad()) {
        throw CgatsError(0, "the file can't be read to its end");
    }
    return content;
}

/// Refuses what the parser would follow until it has no stack left, and what no chart has.
class Outline {
public:
    explicit Outline(std::string_view text) : text(text) {}

    void Check()
    {
        int depth = 0;
        for (size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at)) {
            if (Is(at, "<!--")) {
                at = Behind(at, "-->");
            } else if (Is(at, "<![CDATA[")) {
                at = Behind(at, "]]>");
            } else if (Is(at, "<?")) {
                at = Behind(at, "?>");
            } else if (Is(at, "<!")) {
                throw CgatsError(LineOf(at), "a document type is not taken");
            } else {
                const bool closes = Is(at, "</");
                at = BehindTag(at);
                depth += closes ? -1 : text[at - 2] == '/' ? 0 : 1;
                if (depth > CxfReader::LargestDepth) {
                    throw CgatsError(LineOf(at), "elements lie more than " + std::to_string(CxfReader::LargestDepth) +
                                                     " deep in one another");
                }
            }
        }
    }

private:
    bool Is(size_t at, std::string_view mark) const { return text.substr(at, mark.size()) == mark; }

    int LineOf(size_t at) const
    {
        return 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
    }

    size_t Behind(size_t at, std::string_view end) const
    {
        const size_t found = text.find(end, at);
        if (found == std::string_view::npos) {
            throw CgatsError(LineOf(at), "what begins here has no end");
        }
        return found + end.size();
    }

    size_t BehindTag(size_t begin) const
    {
        char quote = 0;
        for (size_t at = begin + 1; at < text.size(); ++at) {
            if (quote != 0) {
                quote = text[at] == quote ? '\0' : quote;
            } else if (text[at] == '"' || text[at] == '\'') {
                quote = text[at];
            } else if (text[at] == '>') {
                return at + 1;
            }
        }
        throw CgatsError(LineOf(begin), "what begins here has no end");
    }

    std::string_view text;
};

/// Without its prefix: namespaces are looked at once, at the root.
std::string_view LocalName(const Node& node)
{
    const std::string_view name(node.name(), node.name_size());
    const size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

const Node* Child(const Node* node, std::string_view name)
{
    const Node* child = node == nullptr ? nullptr : node->first_node();
    while (child != nullptr && (child->type() != rapidxml::node_element || LocalName(*child) != name)) {
        child = child->next_sibling();
    }
    return child;
}

std::vector<const Node*> Children(const Node* node, std::string_view name)
{
    std::vector<const Node*> children;
    for (const Node* child = node == nullptr ? nullptr : node->first_node(); child != nullptr;
         child = child->next_sibling()) {
        if (child->type() == rapidxml::node_element && LocalName(*child) == name) {
            children.push_back(child);
        }
    }
    return children;
}

std::string Attribute(const Node& node, const char* name)
{
    const auto* const attribute = node.first_attribute(name);
    return attribute == nullptr ? std::string() : std::string(attribute->value(), attribute->value_size());
}

/// The text of an element without the blanks around it; empty where there is none.
std::string Text(const Node* node)
{
    const std::string text = node == nullptr ? std::string() : std::string(node->value(), node->value_size());
    const size_t first = text.find_first_not_of(" \t\r\n");
    return first == std::string::npos ? std::string()
                                      : text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

/// A text that a keyword of the table can be called.
bool IsKeyword(const std::string& name)
{
    return !name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char character) {
        return (character < 0x80 && std::isalnum(character) != 0) || character == '_';
    });
}

class ObjectReader {
public:
    explicit ObjectReader(std::string content) : content(std::move(content)) {}

    CgatsTable Table()
    {
        const Node& root = Parse();
        TakeInformation(Child(&root, "FileInformation"));
        const Node* const resources = Child(&root, "Resources");
        for (const Node* entry : Children(Child(resources, "ColorSpecificationCollection"), "ColorSpecification")) {
            specifications.emplace(Attribute(*entry, "Id"), entry);
        }
        for (const Node* object : Children(Child(resources, "ObjectCollection"), "Object")) {
            TakeObject(*object);
        }
        TakeSpecification();
        for (size_t i = 0; i < table.rows.size(); ++i) {
            values[i].resize(table.fields.size());
            for (size_t field = 0; field < values[i].size(); ++field) {
                if (!values[i][field] && tags.count(table.fields[field]) == 0) {
                    throw CgatsError(table.rows[i].line, "the object '" + table.rows[i].values.front() + "' has no " +
                                                             table.fields[field] + ", which others have");
                }
                table.rows[i].values.push_back(std::move(values[i][field]).value_or(std::string()));
            }
            values[i] = {};
        }
        return std::move(table);
    }

private:
    const Node& Parse()
    {
        if (content.starts_with(Utf8::ByteOrderMark)) {
            content.erase(0, Utf8::ByteOrderMark.size());
        }
        if (content.starts_with("\xfe\xff") || content.starts_with("\xff\xfe") ||
            content.find('\0') != std::string::npos) {
            throw CgatsError(0, "the file is not in UTF-8");
        }
        Outline(content).Check();
        // The parser shortens texts where they stand; lines are those of the file as it was.
        lineEnds.reserve(1024);
        for (size_t at = content.find('\n'); at != std::string::npos; at = content.find('\n', at + 1)) {
            lineEnds.push_back(at);
        }
        try {
            document.parse<rapidxml::parse_validate_closing_tags>(content.data());
        } catch (const rapidxml::parse_error& error) {
            throw CgatsError(LineOf(error.where<char>()), std::string("no whole XML: ") + error.what());
        }
        const Node* const root = document.first_node();
        if (root == nullptr || LocalName(*root) != "CxF") {
            throw CgatsError(root == nullptr ? 0 : LineOf(root->name()), "the file is no CxF");
        }
        const std::string prefix(root->name(), root->name_size() - LocalName(*root).size());
        const std::string attribute = prefix.empty() ? "xmlns" : "xmlns:" + prefix.substr(0, prefix.size() - 1);
        if (Attribute(*root, attribute.c_str()) != CxfFile::Namespace) {
            throw CgatsError(LineOf(root->name()),
                             std::string("the file is no CxF3: its namespace is not ") + CxfFile::Namespace);
        }
        return *root;
    }

    int LineOf(const char* place) const
    {
        const size_t at = static_cast<size_t>(place - content.data());
        return 1 + static_cast<int>(std::lower_bound(lineEnds.begin(), lineEnds.end(), at) - lineEnds.begin());
    }

    int LineOf(const Node& node) const { return LineOf(node.name()); }

    void SetMissing(const char* keyword, const std::string& value)
    {
        if (!value.empty() && table.FindKeyword(keyword) == nullptr) {
            table.SetKeyword(keyword, value);
        }
    }

    void TakeInformation(const Node* information)
    {
        for (const Node* tag : Children(information, "Tag")) {
            if (const std::string name = Attribute(*tag, "Name"); IsKeyword(name)) {
                table.keywords.push_back({name, Attribute(*tag, "Value"), LineOf(*tag)});
            }
        }
        SetMissing("DESCRIPTOR", Text(Child(information, "Description")));
        SetMissing("CREATED", Text(Child(information, "CreationDate")));
    }

    /// Adds a value to the row in hand, and its field to the table.
    void Add(const std::string& field, const std::string& value, const Node& where)
    {
        const auto [known, isNew] = fields.emplace(field, table.fields.size());
        if (isNew) {
            table.fields.push_back(field);
        }
        if (table.fields.size() * values.size() > CxfReader::LargestTable) {
            throw CgatsError(LineOf(where), "the objects have more than " + std::to_string(CxfReader::LargestTable) +
                                                " values in all, those counted that others have");
        }
        const size_t index = known->second;
        std::vector<std::optional<std::string>>& row = values.back();
        row.resize(std::max(row.size(), index + 1));
        if (row[index]) {
            throw CgatsError(LineOf(where), field + " stands there twice");
        }
        row[index] = value;
    }

    void AddParts(const Node* element, std::initializer_list<std::pair<const char*, const char*>> parts)
    {
        for (const auto& [name, field] : parts) {
            const Node* const part = Child(element, name);
            if (part == nullptr) {
                throw CgatsError(LineOf(*element), std::string(LocalName(*element)) + " has no " + name);
            }
            Add(field, Text(part), *part);
        }
    }

    void TakeObject(const Node& object)
    {
        const Node* const colours = Child(&object, "ColorValues");
        const Node* const device = Child(&object, "DeviceColorValues");
        const std::vector<const Node*> collections = Children(&object, "TagCollection");
        const bool isOurs = std::any_of(collections.begin(), collections.end(), [](const Node* collection) {
            return Attribute(*collection, "Name") == CxfFile::FieldTags;
        });
        if (colours == nullptr && device == nullptr && !isOurs) {
            return;
        }
        table.rows.push_back({{}, LineOf(object)});
        table.fieldsLine = table.fieldsLine == 0 ? LineOf(object) : table.fieldsLine;
        values.emplace_back();
        const std::string name = Attribute(object, "Name");
        Add("SAMPLE_NAME", name.empty() ? Attribute(object, "Id") : name, object);
        if (const Node* const inks = Child(device, "ColorCMYK")) {
            table.SetKeyword(DeviceValues::MaximumKeyword, "100");
            AddParts(inks, {{"Cyan", "CMYK_C"}, {"Magenta", "CMYK_M"}, {"Yellow", "CMYK_Y"}, {"Black", "CMYK_K"}});
        }
        TakeScreenValues(Child(device, "ColorRGB"));
        for (const Node* collection : collections) {
            TakeTags(*collection);
        }
        if (const Node* const xyz = Chosen(colours, "ColorCIEXYZ")) {
            AddParts(xyz, {{"X", "XYZ_X"}, {"Y", "XYZ_Y"}, {"Z", "XYZ_Z"}});
        }
        if (const Node* const lab = Chosen(colours, "ColorCIELab")) {
            AddParts(lab, {{"L", "LAB_L"}, {"A", "LAB_A"}, {"B", "LAB_B"}});
        }
        for (const Node* density : Children(colours, "ColorDensity")) {
            TakeDensity(*density);
        }
        if (const Node* const spectrum = Chosen(colours, "ReflectanceSpectrum")) {
            TakeSpectrum(*spectrum);
        }
    }

    /// Of several values of a kind, measured or computed otherwise, those of the ColorSpecification that the file's first
    /// one has.
    const Node* Chosen(const Node* colours, const char* kind)
    {
        const std::vector<const Node*> all = Children(colours, kind);
        if (all.empty()) {
            return nullptr;
        }
        const std::string& wanted = chosen.emplace(kind, Attribute(*all.front(), "ColorSpecification")).first->second;
        const auto found = std::find_if(all.begin(), all.end(), [&wanted](const Node* node) {
            return Attribute(*node, "ColorSpecification") == wanted;
        });
        if (found == all.end()) {
            throw CgatsError(LineOf(*all.front()), std::string(kind) + " is not of the ColorSpecification '" + wanted +
                                                       "', as that of others is");
        }
        return *found;
    }

    void TakeScreenValues(const Node* lights)
    {
        if (lights == nullptr) {
            return;
        }
        constexpr double usual = 255.0;
        table.SetKeyword(DeviceValues::MaximumKeyword, "255");
        double range = usual;
        const std::string told = Text(Child(lights, "MaxRange"));
        if (!told.empty() && !(ParseNumber(told, range) && range >= 1.0)) {
            throw CgatsError(LineOf(*lights), "MaxRange '" + told + "' is not a number from 1 on");
        }
        for (const auto& [name, field] : {std::pair("R", "RGB_R"), {"G", "RGB_G"}, {"B", "RGB_B"}}) {
            double value = 0.0;
            if (!ParseNumber(Text(Child(lights, name)), value)) {
                throw CgatsError(LineOf(*lights),
                                 std::string(name) + " '" + Text(Child(lights, name)) + "' is not a number");
            }
            constexpr double parts = 1e6;
            Add(field, PlainNumberText(std::round(value * usual / range * parts) / parts), *lights);
        }
    }

    void TakeTags(const Node& collection)
    {
        if (Attribute(collection, "Name") != CxfFile::FieldTags) {
            return;
        }
        for (const Node* tag : Children(&collection, "Tag")) {
            const std::string name = Attribute(*tag, "Name");
            tags.insert(name);
            Add(name, Attribute(*tag, "Value"), *tag);
        }
    }

    /// Whether the row in hand has a value.
    bool Has(const std::string& field) const
    {
        const auto known = fields.find(field);
        return known != fields.end() && known->second < values.back().size() && values.back()[known->second];
    }

    void TakeDensity(const Node& density)
    {
        const std::string filter = Text(Child(&density, "Filter"));
        for (size_t i = 0; i < DensityFields.size(); ++i) {
            if (filter == CxfFile::DensityFilters[i] && !Has(DensityFields[i])) {
                Add(DensityFields[i], Text(Child(&density, "Density")), density);
                SetMissing("DENSITY_STATUS", Text(Child(&density, "Status")));
            }
        }
    }

    const Node* SpecificationOf(const Node& value) const
    {
        const auto found = specifications.find(Attribute(value, "ColorSpecification"));
        return found == specifications.end() ? nullptr : found->second;
    }

    void TakeSpectrum(const Node& spectrum)
    {
        const Node* const range = Child(Child(SpecificationOf(spectrum), "MeasurementSpec"), "WavelengthRange");
        const std::string own = Attribute(spectrum, "StartWL");
        const std::string start = own.empty() && range != nullptr ? Attribute(*range, "StartWL") : own;
        const std::string increment = range == nullptr ? std::string() : Attribute(*range, "Increment");
        double first = 0.0;
        double step = 0.0;
        const auto isLength = [](double value) {
            return value == std::floor(value) && value >= 1.0 && value <= 10000.0;
        };
        if (!ParseNumber(start, first) || !ParseNumber(increment, step) || !isLength(first) || !isLength(step)) {
            throw CgatsError(LineOf(spectrum), "the spectrum's first wavelength ('" + start + "') and step ('" +
                                                   increment + "') are not told as whole numbers of nm");
        }
        std::istringstream words(Text(&spectrum));
        constexpr int most = 2000;
        int band = 0;
        for (std::string word; words >> word; ++band) {
            if (band == most) {
                throw CgatsError(LineOf(spectrum), "the spectrum has more than " + std::to_string(most) + " values");
            }
            Add("SPECTRAL_NM" + std::to_string(static_cast<int>(first) + band * static_cast<int>(step)), word,
                spectrum);
        }
    }

    /// For what the colours are, and with what they were measured.
    void TakeSpecification()
    {
        for (const auto& [kind, id] : chosen) {
            const auto found = specifications.find(id);
            const Node* const specification = found == specifications.end() ? nullptr : found->second;
            if (const Node* const function = Child(specification, "TristimulusSpec"); kind != "ReflectanceSpectrum") {
                const std::string illuminant = Text(Child(function, "Illuminant"));
                const std::string observer = Text(Child(function, "Observer"));
                SetMissing("WEIGHTING_FUNCTION", illuminant.empty()
                                                     ? std::string()
                                                     : "ILLUMINANT," + illuminant + ";OBSERVER," +
                                                           observer.substr(0, observer.find('_')) + " degree");
            }
            const Node* const device = Child(Child(specification, "MeasurementSpec"), "Device");
            SetMissing("INSTRUMENTATION", Text(Child(device, "Model")));
            SetMissing("INSTRUMENT_SERIAL", Text(Child(device, "SerialNumber")));
            SetMissing("MEASUREMENT_CONDITION", Text(Child(device, "DeviceIllumination")).substr(0, 2));
        }
    }

    std::string content;
    std::vector<size_t> lineEnds;
    rapidxml::xml_document<char> document;
    CgatsTable table;
    std::map<std::string, const Node*> specifications;
    std::map<std::string, std::string> chosen;                    ///< the specification of each kind of colour values
    std::vector<std::vector<std::optional<std::string>>> values;  ///< of each row, by field
    std::map<std::string, size_t> fields;                         ///< of the table, with their indices
    std::set<std::string> tags;                                   ///< fields that a row may lack
};

}  // namespace

CgatsTable CxfReader::Read(std::istream& input) { return ObjectReader(ContentOf(input)).Table(); }

}  // namespace J4Chart
