#ifndef ORVANE_TESTS_TEMPORARY_DATABASE_H
#define ORVANE_TESTS_TEMPORARY_DATABASE_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <orvane/util.h>

#include "small_schema.h"

/* A database in a folder of its own, which goes away with the object:
 *
 *     TemporaryDatabase db;                                    // the small schema of small_schema.h
 *     db.addTable("site", {{"AAK", "2008001", "-1", "42.6390", ...}, ...});
 *     open(db.path());
 *
 * Rows are field texts in schema order; what a row leaves out at its end is null. They are padded to their
 * widths, numbers to the right and text to the left. Problems in a test's own data throw. */
class TemporaryDatabase
{
public:
    using Row = std::vector<std::string>;

    /* A database "quakes" with the small schema. */
    TemporaryDatabase() : TemporaryDatabase("small", smallSchemaText()) {}

    /* A database of any schema, written beside the descriptor as NAME.yaml. */
    TemporaryDatabase(const std::string &schemaName, const std::string &schemaText)
    {
        std::string folderTemplate = (std::filesystem::temp_directory_path() / "orvane-test-XXXXXX").string();
        if (!mkdtemp(folderTemplate.data()))
            throw std::runtime_error("no temporary folder");
        m_folder = folderTemplate;
        writeFile(schemaName + ".yaml", schemaText);
        writeFile("quakes", "schema: " + schemaName +
                                "\ndbpath: [.]\nlocks: local\nidserver: \"\"\n"
                                "description: a small database\ndetail: made by a test\n");
        readSchema(schemaName, schemaText);
    }

    /* A database of the shipped css3.0 schema. */
    static std::unique_ptr<TemporaryDatabase> ofPublicStandard()
    {
        return std::make_unique<TemporaryDatabase>("css3.0", readFile(ORVANE_TEST_SCHEMAS "/css3.0.yaml"));
    }

    ~TemporaryDatabase()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    TemporaryDatabase(const TemporaryDatabase &) = delete;
    TemporaryDatabase &operator=(const TemporaryDatabase &) = delete;

    std::string folder() const { return m_folder; }
    /* The descriptor: the path to open. */
    std::string path() const { return m_folder + "/quakes"; }
    std::string tablePath(const std::string &table) const { return path() + "." + table; }

    /* Writes a table's file; without rows an empty one. */
    void addTable(const std::string &table, const std::vector<Row> &rows) const
    {
        writeFile("quakes." + table, formatted(table, rows));
    }

    /* Appends rows to a table's file. */
    void appendRows(const std::string &table, const std::vector<Row> &rows) const
    {
        std::ofstream(tablePath(table), std::ios::binary | std::ios::app) << formatted(table, rows);
    }

    /* The record of a row, without its line feed. */
    std::string record(const std::string &table, const Row &row) const
    {
        std::string text;
        const std::vector<std::string> &fields = m_relations.at(table);
        if (row.size() > fields.size())
            throw std::runtime_error("more values than fields in " + table);
        for (size_t i = 0; i < fields.size(); ++i) {
            const Attribute &attribute = m_attributes.at(fields[i]);
            if (i > 0)
                text += ' ';
            text += padded(attribute, i < row.size() ? row[i] : attribute.nullText);
        }
        return text;
    }

    /* Writes any file of the folder, byte by byte as given. */
    void writeFile(const std::string &name, std::string_view bytes) const
    {
        std::ofstream file(m_folder + "/" + name, std::ios::binary | std::ios::trunc);
        file << bytes;
        if (!file.flush())
            throw std::runtime_error("can't write " + name);
    }

    static std::string readFile(const std::string &path)
    {
        std::ifstream file(path, std::ios::binary);
        if (!file)
            throw std::runtime_error("can't read " + path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    struct Attribute {
        bool leftAligned;
        size_t width;
        std::string nullText;
    };

    static std::string text(const Pf *pf, const char *key)
    {
        PfValue value{};
        return pfget(pf, key, &value) == PFSTRING ? value.text : std::string();
    }

    static const Pf *node(const Pf *pf, const char *key)
    {
        PfValue value{};
        if (pfget(pf, key, &value) < 0 || !value.pf)
            throw std::runtime_error(std::string("the schema has no ") + key);
        return value.pf;
    }

    void readSchema(const std::string &name, const std::string &schemaText)
    {
        Pf *schema = nullptr;
        if (pfparse(schemaText.data(), schemaText.size(), name.c_str(), &schema) < 0)
            throw std::runtime_error("the schema " + name + " can't be parsed");
        const std::unique_ptr<Pf, void (*)(Pf *)> owner(schema, pffree);
        const auto eachKey = [](const Pf *pf, auto visit) {
            const std::unique_ptr<Tbl, void (*)(Tbl *)> keys(pfkeys(pf),
                                                             [](Tbl *list) { freetbl(list, nullptr); });
            for (int64_t i = 0; i < maxtbl(keys.get()); ++i)
                visit(static_cast<const char *>(gettbl(keys.get(), i)));
        };
        const Pf *attributes = node(schema, "attributes");
        eachKey(attributes, [&](const char *key) {
            const Pf *attribute = node(attributes, key);
            const std::string type = text(attribute, "type");
            m_attributes[key] = {type == "string", std::stoul(text(attribute, "width")),
                                 text(attribute, "null")};
        });
        const Pf *relations = node(schema, "relations");
        eachKey(relations, [&](const char *key) {
            const Pf *fields = node(node(relations, key), "fields");
            for (int64_t i = 0; i < pfmaxtbl(fields); ++i)
                m_relations[key].push_back(text(fields, std::to_string(i).c_str()));
        });
    }

    static std::string padded(const Attribute &attribute, const std::string &value)
    {
        if (value.size() > attribute.width)
            throw std::runtime_error("'" + value + "' is wider than its field");
        const std::string blanks(attribute.width - value.size(), ' ');
        return attribute.leftAligned ? value + blanks : blanks + value;
    }

    std::string formatted(const std::string &table, const std::vector<Row> &rows) const
    {
        std::string lines;
        for (const Row &row : rows)
            lines += record(table, row) + "\n";
        return lines;
    }

    std::string m_folder;
    std::map<std::string, Attribute> m_attributes;
    std::map<std::string, std::vector<std::string>> m_relations;
};

#endif
