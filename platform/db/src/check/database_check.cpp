#include "check/database_check.h"

#include "base/concat.h"
#include "check/table_check.h"
#include "saved/saved_view.h"
#include "table/field_value.h"

#include <algorithm>
#include <set>

namespace orvane {

namespace {

class DatabaseCheck
{
public:
    DatabaseCheck(Database &database, FileSystem &files, const CheckOptions &options,
                  const Findings::Sink &sink, CheckSummary &summary, Work &work)
        : database_(database), files_(files), options_(options), findings_(options.limit, sink),
          summary_(summary), work_(work)
    {
    }

    Status check(std::int64_t only)
    {
        const auto relations = static_cast<std::int64_t>(database_.schema().relations().size());
        plan_progress(only);
        if (only < 0)
            check_folders();
        tables_.resize(static_cast<std::size_t>(relations));
        for (std::int64_t index = 0; index < relations; ++index)
            if (only < 0 || index == only)
                if (Status checked = check_table(index); !checked.ok())
                    return finish(checked);
        for (std::int64_t index = 0; index < relations; ++index)
            if (only < 0 || index == only)
                if (Status checked = check_foreign_keys(index); !checked.ok())
                    return finish(checked);
        if (only < 0) {
            if (Status checked = check_counters(); !checked.ok())
                return finish(checked);
            check_saved_views();
            check_other_files();
        }
        return finish(Status());
    }

private:
    BaseTable &table(std::int64_t index) { return static_cast<BaseTable &>(*database_.table(index)); }

    Status finish(const Status &status)
    {
        findings_.end_file();
        summary_.errors = findings_.errors();
        summary_.notes = findings_.notes();
        return status;
    }

    static Finding finding_of(FindingKind kind, std::string file, std::string message)
    {
        Finding finding;
        finding.kind = kind;
        finding.file = std::move(file);
        finding.message = std::move(message);
        return finding;
    }

    // ---- Progress --------------------------------------------------------------------------------

    // Bytes that will be read, as far as that can be known before.
    void plan_progress(std::int64_t only)
    {
        const auto &relations = database_.schema().relations();
        for (std::size_t i = 0; i < relations.size(); ++i) {
            if (only >= 0 && static_cast<std::int64_t>(i) != only)
                continue;
            const Relation &relation = relations[i];
            RecordFile &file = table(static_cast<std::int64_t>(i)).file();
            if (!file.look().ok() || !file.present())
                continue;
            const auto readings = 1 + (relation.primary.empty() ? 0 : 1) +
                                  (relation.alternate.empty() ? 0 : 1) +
                                  static_cast<std::int64_t>(relation.foreign.size());
            bytes_planned_ += readings * file.state().size;
        }
    }

    void advance(std::int64_t bytes)
    {
        bytes_done_ += bytes;
        work_.advance_to(static_cast<double>(bytes_done_) /
                         static_cast<double>(std::max<std::int64_t>(bytes_planned_, 1)));
    }

    // ---- Tables ----------------------------------------------------------------------------------

    OpenTable opened(std::int64_t index)
    {
        OpenTable open = open_for_check(table(index), files_, options_, findings_);
        open.checked.advance = [this](std::int64_t bytes) { advance(bytes); };
        return open;
    }

    // A failure of the disk, or of a file that changes under us, is an error of the file and no end to the
    // check.
    Status take(const Status &status)
    {
        if (status.ok() || status.code() == Code::Cancelled || status.code() == Code::Memory)
            return status;
        findings_.add(finding_of(FindingKind::File, {}, std::string(status.message())));
        return Status();
    }

    Status check_table(std::int64_t index)
    {
        findings_.end_file();
        OpenTable open = opened(index);
        if (!open.file)
            return Status();
        ++summary_.tables;
        check_undo_note(open, files_, findings_);
        Status read = check_lines_and_fields(open, files_, findings_, work_);
        summary_.records += open.checked.records;
        summary_.marked += open.marked;
        if (Status taken = take(read); !taken.ok() || !read.ok())
            return taken;
        if (const std::int64_t repaired = repair_file(open, options_, findings_, work_); repaired > 0) {
            summary_.repaired += repaired;
            if (options_.repair == Repair::Do) {
                const std::int64_t greatest = open.greatest_id;
                const std::int64_t records = open.checked.records;
                open = opened(index);
                if (!open.file)
                    return Status();
                open.greatest_id = greatest;
                open.checked.records = records + 1; // one may have got its line feed
            }
        } else if (!open.file)
            return Status(); // it could not be repaired
        const Relation &relation = open.table->relation();
        for (const auto &[key, what] :
             {std::pair(&relation.primary, "primary key"), std::pair(&relation.alternate, "alternate key")})
            if (!key->empty())
                if (Status found = take(find_double_keys(open.checked, *key, what, findings_, work_));
                    !found.ok())
                    return found;
        known(index) = {true, open.greatest_id};
        return Status();
    }

    // ---- Foreign keys ----------------------------------------------------------------------------

    // The relation whose records the values of a foreign key name; null where the schema doesn't say.
    const Relation *target_of(const Relation &from, const KeyElement &element) const
    {
        if (element.is_range())
            return nullptr;
        const auto is_key = [&](const Key &key) {
            return key.size() == 1 && !key[0].is_range() && key[0].begin == element.begin;
        };
        const Relation *target = database_.schema().defining(element.begin);
        for (const Relation &relation : database_.schema().relations())
            if (!target && (is_key(relation.primary) || is_key(relation.alternate)))
                target = &relation;
        return target == &from ? nullptr : target;
    }

    Status check_foreign_keys(std::int64_t index)
    {
        const Relation &relation = table(index).relation();
        if (relation.foreign.empty())
            return Status();
        findings_.end_file();
        OpenTable open = opened_quietly(index);
        if (!open.file)
            return Status();
        for (const KeyElement &element : relation.foreign)
            if (const Relation *target = target_of(relation, element))
                if (Status checked = check_foreign_key(open, element.begin, *target); !checked.ok())
                    return checked;
        return Status();
    }

    // What can't be opened was said before.
    OpenTable opened_quietly(std::int64_t index)
    {
        Findings unsaid(0, [](const Finding &) {});
        OpenTable open = open_for_check(table(index), files_, options_, unsaid);
        open.checked.advance = [this](std::int64_t bytes) { advance(bytes); };
        open.checked.whole = open.checked.relation && open.checked.size % open.table->record_size() == 0;
        open.checked.records = open.checked.relation ? open.checked.size / open.table->record_size() : 0;
        findings_.begin_file(table(index).name(), table(index).file().path().shown);
        return open;
    }

    Status check_foreign_key(const OpenTable &open, const std::string &field, const Relation &target)
    {
        Findings unsaid(0, [](const Finding &) {});
        const std::int64_t index = database_.schema().relation_index(target.name);
        OpenTable other = open_for_check(table(index), files_, options_, unsaid);
        if (!other.file) {
            if (!table(index).file().present())
                findings_.add(absent_target(field, target));
            return Status();
        }
        other.checked.records = other.checked.size / target.record_size();
        return take(find_dangling_keys(open.checked, field, other.checked, findings_, work_));
    }

    static Finding absent_target(const std::string &field, const Relation &target)
    {
        Finding finding = finding_of(FindingKind::NoTable, {},
                                     concat("is not looked up: table ", target.name, " has no file"));
        finding.field = field;
        return finding;
    }

    // ---- Counters of ids -------------------------------------------------------------------------

    Status check_counters()
    {
        findings_.end_file();
        const Relation *lastid = database_.schema().relation("lastid");
        const int name = lastid ? lastid->field_index("keyname") : -1;
        const int number = lastid ? lastid->field_index("keyvalue") : -1;
        if (name < 0 || number < 0)
            return Status();
        const std::int64_t index = database_.schema().relation_index("lastid");
        OpenTable open = opened_quietly(index);
        if (!open.file)
            return Status();
        return take(for_record_blocks(
            open.checked, open.checked.records + 1, work_,
            [&](const LineRun &run, std::int64_t begin, std::int64_t end, unsigned) {
                for (std::int64_t at = begin; at < end; ++at)
                    if (Status checked =
                            check_counter(run, at, lastid->fields()[static_cast<std::size_t>(name)],
                                          lastid->fields()[static_cast<std::size_t>(number)], index);
                        !checked.ok())
                        return checked;
                return Status();
            },
            [] {}, [] {}));
    }

    Status check_counter(const LineRun &run, std::int64_t at, const RelationField &name,
                         const RelationField &number, std::int64_t lastid)
    {
        const std::int64_t size = table(lastid).record_size();
        const auto text = [&](const RelationField &field) {
            return std::string_view(run.records + at * size + field.offset,
                                    static_cast<std::size_t>(field.attribute->width));
        };
        if (is_null_field(*name.attribute, text(name)))
            return Status();
        const std::string id(trimmed(text(name)));
        const Relation *defining = database_.schema().defining(id);
        Finding finding;
        finding.offset = run.offset + at * size + number.offset;
        finding.line = run.line + at;
        finding.record = run.offset % size == 0 ? run.offset / size + at : -1;
        if (!defining) {
            finding.kind = FindingKind::NoCounter;
            finding.field = name.attribute->name;
            finding.found = shown_bytes(id);
            finding.message = "is no id that a table of the schema defines";
            findings_.add(std::move(finding));
            return Status();
        }
        const Known &used = known(database_.schema().relation_index(defining->name));
        const auto counted = decode_integer(text(number));
        if (!used.checked || !counted || *counted >= used.greatest_id)
            return Status();
        finding.kind = FindingKind::Counter;
        finding.field = number.attribute->name;
        finding.found = concat(id, " ", *counted);
        finding.message = concat("is behind: ", used.greatest_id, " is in use in table ", defining->name);
        const std::int64_t record = finding.record;
        findings_.add(std::move(finding));
        return raise_counter(id, used.greatest_id, record);
    }

    Status raise_counter(const std::string &id, std::int64_t greatest, std::int64_t record)
    {
        if (options_.repair == Repair::None)
            return Status();
        Finding told;
        told.kind = FindingKind::Counter;
        told.level = FindingLevel::Repair;
        told.record = record;
        if (options_.repair == Repair::Do) {
            const Status raised = database_.raise_counter(id, greatest, work_);
            if (!raised.ok()) {
                findings_.add(
                    finding_of(FindingKind::File, {}, concat("was not repaired: ", raised.message())));
                return Status();
            }
        }
        told.message = concat("the counter of ", id, options_.repair == Repair::Do ? " was" : " would be",
                              " raised to ", greatest);
        findings_.add(std::move(told));
        ++summary_.repaired;
        return Status();
    }

    // ---- Folders and other files -----------------------------------------------------------------

    std::vector<LocatedPath> folders() const
    {
        std::vector<LocatedPath> folders;
        const LocatedPath home = database_.path().folder();
        for (const std::string &folder : database_.descriptor().dbpath)
            folders.push_back(folder == "." ? home : home.entry(folder));
        return folders;
    }

    void check_folders()
    {
        findings_.begin_file({}, database_.path().shown);
        for (const LocatedPath &folder : folders()) {
            const auto state = files_.state(folder.absolute);
            if (state.ok() && state->kind == FileKind::Directory)
                continue;
            Finding finding =
                finding_of(FindingKind::Folder, {},
                           !state.ok()                        ? std::string(state.status().message())
                           : state->kind == FileKind::Missing ? "is a folder of the dbpath and is not there"
                                                              : "is in the dbpath and is no folder");
            finding.found = folder.shown;
            findings_.add(std::move(finding));
        }
        findings_.end_file();
    }

    void check_saved_views()
    {
        findings_.end_file();
        for (const auto &[name, why] : database_.refused_views()) {
            findings_.begin_file(name, database_.path().with_ending("." + name).shown);
            findings_.add(finding_of(FindingKind::SavedView, {},
                                     std::string(why.message().substr(0, why.message().find('\n')))));
            findings_.end_file();
        }
        const auto relations = static_cast<std::int64_t>(database_.schema().relations().size());
        for (std::int64_t index = relations; index < database_.table_end(); ++index) {
            Table *view = database_.table(index);
            const LocatedPath path =
                view ? database_.path().with_ending("." + view->name()) : database_.path();
            const auto state = files_.state(path.absolute);
            if (!view || !state.ok() || state->kind != FileKind::File)
                continue;
            const RecordCount count = view->count_records();
            if (count.refusal.ok())
                continue;
            findings_.begin_file(view->name(), path.shown);
            const std::string_view why = count.refusal.message();
            findings_.add(finding_of(FindingKind::SavedView, {}, std::string(why.substr(0, why.find('\n')))));
            findings_.end_file();
        }
    }

    // Files that are called as those of the database and are none of its tables.
    void check_other_files()
    {
        findings_.end_file();
        findings_.begin_file({}, database_.path().shown);
        std::set<std::string> met;
        for (const LocatedPath &folder : folders()) {
            const auto entries = files_.list(folder.absolute);
            if (!entries.ok())
                continue; // said before
            for (const std::string &entry : *entries)
                if (met.insert(folder.entry(entry).absolute).second)
                    check_other_file(folder.entry(entry));
        }
    }

    void check_other_file(const LocatedPath &path)
    {
        const std::string name = path.name();
        const std::string stem = database_.path().name() + ".";
        const std::string hidden = "." + stem;
        if (name.starts_with(hidden)) {
            if (name.ends_with(".new") || name.find_last_not_of("0123456789-") + 1 < name.size())
                findings_.add(finding_of(FindingKind::Leftover, path.shown,
                                         "is what a program left that was killed, or is writing"));
            return;
        }
        if (!name.starts_with(stem) || path.absolute == database_.path().absolute)
            return;
        const std::string ending = name.substr(stem.size());
        const std::int64_t index = database_.schema().relation_index(ending);
        if (index >= 0) {
            const std::string &used = table(index).file().path().absolute;
            if (used != path.absolute && real(used) != real(path.absolute))
                findings_.add(finding_of(FindingKind::HiddenFile, path.shown,
                                         concat("is not used: ", table(index).file().path().shown,
                                                " comes before it in the dbpath")));
            return;
        }
        if (database_.table_index(ending) >= 0 || database_.refused_views().count(ending) > 0)
            return; // a saved view
        if (ending.find(".damaged-") != std::string::npos || ending.find(".before-") != std::string::npos)
            findings_.add(finding_of(FindingKind::KeptFile, path.shown,
                                     "was kept by a repair; remove it when nothing of it is needed"));
        else
            findings_.add(finding_of(FindingKind::StrayFile, path.shown,
                                     concat("belongs to no table of schema ", database_.schema().name)));
    }

    std::string real(const std::string &path) const
    {
        const auto found = files_.real_path(path);
        return found.ok() ? *found : path;
    }

    struct Known {
        bool checked = false;
        std::int64_t greatest_id = 0;
    };
    Known &known(std::int64_t index) { return tables_[static_cast<std::size_t>(index)]; }

    Database &database_;
    FileSystem &files_;
    const CheckOptions &options_;
    Findings findings_;
    CheckSummary &summary_;
    Work &work_;
    std::vector<Known> tables_;
    std::int64_t bytes_planned_ = 0;
    std::int64_t bytes_done_ = 0;
};

} // namespace

Status check_database(Database &database, FileSystem &files, std::int64_t table, const CheckOptions &options,
                      const Findings::Sink &sink, CheckSummary &summary, Work &work)
{
    DatabaseCheck check(database, files, options, sink, summary, work);
    return check.check(table);
}

} // namespace orvane
