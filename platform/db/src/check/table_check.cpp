#include "check/table_check.h"

#include "base/concat.h"
#include "check/field_check.h"
#include "storage/undo_note.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>
#include <thread>

namespace orvane {

namespace {

// A note that a program at work wrote goes within this time.
constexpr auto note_patience = std::chrono::milliseconds(200);

std::string real_path_of(const OpenTable &open, FileSystem &files)
{
    const std::string &path = open.table->file().path().absolute;
    const auto real = files.real_path(path);
    return real.ok() ? *real : path;
}

std::string first_line(std::string_view text)
{
    return std::string(text.substr(0, text.find('\n')));
}

Finding finding_of(FindingKind kind, std::string message)
{
    Finding finding;
    finding.kind = kind;
    finding.message = std::move(message);
    return finding;
}

Finding about_line(const BadLine &line, std::int64_t record_size)
{
    Finding finding;
    finding.kind = line.ended ? FindingKind::Line : FindingKind::Unfinished;
    finding.line = line.number;
    finding.offset = line.offset;
    finding.record = line.offset % record_size == 0 ? line.offset / record_size : -1;
    finding.found = shown_bytes(line.begin);
    const std::int64_t width = line.length - (line.ended ? 1 : 0);
    if (line.ended) {
        finding.message = concat("is a line of ", width, " bytes where a record has ", record_size - 1);
        if (line.length % record_size == 0)
            finding.message +=
                concat(": ", line.length / record_size, " records without a line feed between them, perhaps");
        else if (width == record_size && line.begin.size() == static_cast<std::size_t>(width) &&
                 line.begin.back() == '\r')
            finding.message += ": it ends with a carriage return";
    } else if (width == record_size - 1) {
        finding.message = "is a last line without a line feed: it does not count as a record";
    } else {
        finding.message =
            concat("is a last line of ", width, " bytes without a line feed, where a record has ",
                   record_size - 1, "; the next record that is added would remove it");
    }
    return finding;
}

} // namespace

OpenTable open_for_check(BaseTable &table, FileSystem &files, const CheckOptions &options, Findings &findings)
{
    OpenTable open;
    open.table = &table;
    RecordFile &records = table.file();
    static_cast<void>(records.count_records());
    const Status &refusal = records.refusal();
    if (!records.present() && refusal.ok())
        return open;
    findings.begin_file(table.name(), records.path().shown);
    const bool is_file = records.state().kind == FileKind::File;
    if (!refusal.ok() && (!is_file || refusal.code() != Code::Format)) {
        findings.add(finding_of(FindingKind::File, first_line(refusal.message())));
        return open;
    }
    auto file = files.open(records.path().absolute);
    const auto state = file.ok() ? (*file)->state() : Result<FileState>(file.status());
    if (!state.ok()) {
        findings.add(finding_of(FindingKind::File,
                                concat("cannot be opened: ", first_line(state.status().message()))));
        return open;
    }
    open.state = *state;
    open.file = std::make_unique<SettledFile>(files, std::move(*file), table.policy(),
                                              undo_note_path(real_path_of(open, files)));
    open.checked.relation = &table.relation();
    open.checked.file = open.file.get();
    open.checked.size = state->size;
    open.checked.limits = options.limits;
    return open;
}

Status check_lines_and_fields(OpenTable &open, FileSystem &files, Findings &findings, Work &work)
{
    const Relation &relation = open.table->relation();
    const std::int64_t record_size = relation.record_size();
    std::vector<std::unique_ptr<FieldCheck>> checks;
    for (unsigned thread = 0; thread < thread_limit(); ++thread)
        checks.push_back(std::make_unique<FieldCheck>(relation));
    for (Finding &finding : checks.front()->broken_ranges())
        findings.add(std::move(finding));
    RecordLines lines(*open.file, record_size, open.checked.size, open.checked.limits.piece_bytes);
    std::vector<std::optional<FindingBatch>> batches;
    std::optional<BadLine> unfinished;
    Status read = lines.read(
        [&](const LineRun &run) {
            batches.clear();
            batches.resize(static_cast<std::size_t>((run.count + FieldCheck::batch - 1) / FieldCheck::batch));
            Status done = work.for_blocks(
                run.count, FieldCheck::batch, 0, [&](std::int64_t begin, std::int64_t end, unsigned thread) {
                    auto &batch = batches[static_cast<std::size_t>(begin / FieldCheck::batch)];
                    batch.emplace(findings);
                    checks[thread]->check(run, begin, end - begin, *batch);
                    return Status();
                });
            if (!done.ok())
                return done;
            for (auto &batch : batches)
                batch->add_to(findings);
            open.checked.records += run.count;
            open.checked.advance(run.count * record_size);
            return Status();
        },
        [&](const BadLine &line) {
            if (line.ended)
                findings.add(about_line(line, record_size));
            else
                unfinished = line;
            open.checked.whole = false;
            open.checked.advance(line.length);
            return work.poll();
        });
    for (const auto &check : checks) {
        open.marked += check->marked();
        open.greatest_id = std::max(open.greatest_id, check->greatest_id());
    }
    if (unfinished) {
        // One that another program is adding is a record by now.
        const auto now = files.state(open.table->file().path().absolute);
        if (!now.ok() || (now->same_file(open.state) && now->size == open.state.size))
            findings.add(about_line(*unfinished, record_size));
        else
            open.checked.whole = true;
    }
    return read;
}

void check_undo_note(const OpenTable &open, FileSystem &files, Findings &findings)
{
    const std::string path = undo_note_path(real_path_of(open, files));
    const auto before = files.state(path);
    if (!before.ok() || before->kind == FileKind::Missing)
        return;
    std::this_thread::sleep_for(note_patience);
    const auto after = files.state(path);
    if (!after.ok() || !(*after == *before))
        return; // somebody is at work
    const auto note = find_undo_note(files, path);
    Finding finding = finding_of(FindingKind::UndoNote, {});
    if (note.ok() && *note && (*note)->is_about(open.state)) {
        finding.offset = (*note)->offset;
        finding.record = finding.offset / open.table->record_size();
        finding.message =
            concat("a change of ", (*note)->bytes.size(),
                   " bytes was left half done; the next change takes it back, as ", path, " says");
    } else
        finding.message = concat(path, " is the note of a change that was never begun, or of another file");
    findings.add(std::move(finding));
}

std::int64_t repair_file(OpenTable &open, const CheckOptions &options, Findings &findings, Work &work)
{
    const std::int64_t bad = findings.count(FindingKind::Line);
    const std::int64_t unfinished = findings.count(FindingKind::Unfinished);
    const std::int64_t notes = findings.count(FindingKind::UndoNote);
    if (options.repair == Repair::None || bad + unfinished + notes == 0)
        return 0;
    const auto tell = [&](FindingKind kind, std::string message) {
        Finding told = finding_of(kind, std::move(message));
        told.level = FindingLevel::Repair;
        findings.add(std::move(told));
    };
    const auto lines = [](std::int64_t count) { return concat(count, count == 1 ? " line" : " lines"); };
    if (options.repair == Repair::Plan) {
        if (notes > 0)
            tell(FindingKind::UndoNote, "the change would be taken back");
        if (bad > 0)
            tell(FindingKind::Line,
                 concat(lines(bad), " would be put aside in a file .damaged-TIME, and a copy of ",
                        "the table in a file .before-TIME"));
        if (unfinished > 0)
            tell(FindingKind::Unfinished, "the last line would get its line feed, or, if it is no record, be "
                                          "put aside in a file .damaged-TIME");
        return bad + unfinished + notes;
    }
    open.file.reset();
    const auto mended = open.table->mend(work);
    if (!mended.ok()) {
        findings.add(finding_of(FindingKind::File,
                                concat("was not repaired: ", first_line(mended.status().message()))));
        return 0;
    }
    if (notes > 0)
        tell(FindingKind::UndoNote, "the change was taken back");
    if (!mended->put_aside.empty())
        tell(FindingKind::Line,
             concat(lines(mended->lines), ", ", mended->bytes, " bytes, put aside in ", mended->put_aside));
    if (!mended->copy.empty())
        tell(FindingKind::Line, concat("the table as it was is kept in ", mended->copy));
    if (mended->ended_line)
        tell(FindingKind::Unfinished, "the last line got its line feed");
    return bad + unfinished + notes;
}

} // namespace orvane
