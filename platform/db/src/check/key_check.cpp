#include "check/key_check.h"

#include "base/concat.h"
#include "table/field_value.h"

#include <algorithm>
#include <mutex>

namespace orvane {

namespace {

constexpr std::int64_t block_records = 2048;
constexpr std::size_t buckets = 64; // each is sorted by itself

std::uint64_t hash_of(std::string_view key)
{
    return static_cast<std::uint64_t>(std::hash<std::string_view>()(key)) * 0x9e3779b97f4a7c15u;
}
std::size_t bucket_of(std::uint64_t hash)
{
    return static_cast<std::size_t>(hash >> 58);
}

// Of several passes over a file each looks at another part of the hashes.
struct Pass {
    std::uint64_t number = 0;
    std::uint64_t passes = 1;
    bool has(std::uint64_t hash) const { return passes == 1 || (hash >> 20) % passes == number; }
};
std::uint64_t passes_for(std::int64_t records, const CheckLimits &limits)
{
    const std::int64_t most = std::max<std::int64_t>(limits.hashes, 1);
    return static_cast<std::uint64_t>(std::max<std::int64_t>(1, (records + most - 1) / most));
}

std::string_view record_of(const LineRun &run, std::int64_t at, std::int64_t record_size)
{
    return {run.records + at * record_size, static_cast<std::size_t>(record_size - 1)};
}

std::string_view field_text_of(std::string_view record, const RelationField &field)
{
    return record.substr(static_cast<std::size_t>(field.offset),
                         static_cast<std::size_t>(field.attribute->width));
}

bool all_null(const RecordKey &key, std::string_view record)
{
    return std::all_of(key.fields().begin(), key.fields().end(), [&](const RelationField &field) {
        return is_null_field(*field.attribute, field_text_of(record, field));
    });
}

Finding at_offset(const CheckedFile &checked, std::int64_t offset)
{
    Finding finding;
    const std::int64_t size = checked.relation->record_size();
    finding.offset = offset;
    finding.record = offset % size == 0 ? offset / size : -1;
    finding.line = checked.whole ? offset / size + 1 : -1;
    return finding;
}

// "record 3", or where it begins when it has no number.
std::string record_name(const CheckedFile &checked, std::int64_t offset)
{
    const std::int64_t size = checked.relation->record_size();
    return offset % size == 0 ? concat("record ", offset / size) : concat("the record at byte ", offset);
}

// ---- Double keys ---------------------------------------------------------------------------------

struct Entry {
    std::uint64_t hash;
    std::int64_t offset; // of the record in the file
    bool operator<(const Entry &other) const
    {
        return hash != other.hash ? hash < other.hash : offset < other.offset;
    }
};

struct Double {
    std::int64_t offset;
    std::int64_t first; // the record that has its key before it
    bool operator<(const Double &other) const { return offset < other.offset; }
};

class DoubleKeys
{
public:
    DoubleKeys(const CheckedFile &checked, const Key &key, std::string_view what, Findings &findings,
               Work &work)
        : checked_(checked), key_(*checked.relation, key), what_(what), findings_(findings), work_(work)
    {
    }

    Status find()
    {
        const std::uint64_t passes = passes_for(checked_.records, checked_.limits);
        for (std::uint64_t number = 0; number < passes; ++number) {
            if (Status read = read_hashes(Pass{number, passes}); !read.ok())
                return read;
            Status compared =
                work_.for_blocks(buckets, 1, 0, [this](std::int64_t bucket, std::int64_t, unsigned) {
                    return compare(static_cast<std::size_t>(bucket));
                });
            if (!compared.ok())
                return compared;
        }
        tell();
        return Status();
    }

private:
    Status read_hashes(const Pass &pass)
    {
        for (auto &bucket : entries_)
            bucket.clear();
        const std::int64_t size = checked_.relation->record_size();
        return for_record_blocks(
            checked_, block_records, work_,
            [&](const LineRun &run, std::int64_t begin, std::int64_t end, unsigned) {
                std::vector<Entry> met;
                for (std::int64_t at = begin; at < end; ++at) {
                    const std::string_view record = record_of(run, at, size);
                    const std::uint64_t hash = hash_of(key_.of(record));
                    if (pass.has(hash) && !all_null(key_, record))
                        met.push_back({hash, run.offset + at * size});
                }
                const std::lock_guard lock(mutex_);
                for (const Entry &entry : met)
                    entries_[bucket_of(entry.hash)].push_back(entry);
                return Status();
            },
            [] {}, [] {});
    }

    Result<std::string> key_at(std::int64_t offset) const
    {
        std::string record(static_cast<std::size_t>(checked_.relation->record_size() - 1), '\0');
        const auto got = checked_.file->read_at(offset, std::span<char>(record));
        if (!got.ok())
            return got.status();
        if (*got < record.size())
            return Status(Code::Io, "the file was cut short while it was read");
        return key_.of(record);
    }

    // Equal hashes are of equal keys nearly always, and it is made certain here.
    Status compare(std::size_t bucket)
    {
        std::vector<Entry> &entries = entries_[bucket];
        std::sort(entries.begin(), entries.end());
        std::vector<std::pair<std::string, std::int64_t>> keys; // of one hash, and who had them first
        for (std::size_t at = 0; at < entries.size();) {
            std::size_t end = at + 1;
            while (end < entries.size() && entries[end].hash == entries[at].hash)
                ++end;
            keys.clear();
            const bool several = end > at + 1;
            for (; several && at < end; ++at) {
                if (work_.stopped())
                    return Status();
                const auto key = key_at(entries[at].offset);
                if (!key.ok())
                    return key.status();
                const auto same = std::find_if(keys.begin(), keys.end(),
                                               [&](const auto &known) { return known.first == *key; });
                if (same == keys.end())
                    keys.emplace_back(*key, entries[at].offset);
                else
                    keep({entries[at].offset, same->second});
            }
            at = end;
        }
        return Status();
    }

    // Of more than will be told only the first are kept.
    void keep(const Double &found)
    {
        const std::lock_guard lock(mutex_);
        ++count_;
        found_.push_back(found);
        const std::int64_t limit = findings_.limit_of(FindingKind::KeyDouble);
        const auto most = static_cast<std::size_t>(2 * limit + 1000);
        if (limit < 0 || found_.size() < most)
            return;
        const auto end = found_.begin() + static_cast<std::ptrdiff_t>(limit);
        std::nth_element(found_.begin(), end, found_.end());
        found_.erase(end, found_.end());
    }

    void tell()
    {
        std::sort(found_.begin(), found_.end());
        for (const Double &found : found_) {
            Finding finding = at_offset(checked_, found.offset);
            finding.kind = FindingKind::KeyDouble;
            finding.field = names();
            const auto key = shown_key(found.offset);
            finding.found = key;
            finding.message = concat("is the ", what_, " of ", record_name(checked_, found.first), ", too");
            findings_.add(std::move(finding));
        }
        findings_.add_uncounted(FindingKind::KeyDouble, names(),
                                count_ - static_cast<std::int64_t>(found_.size()));
    }

    std::string names() const
    {
        std::string names;
        for (const RelationField &field : key_.fields())
            names.append(names.empty() ? "" : ", ").append(field.attribute->name);
        return names;
    }

    std::string shown_key(std::int64_t offset) const
    {
        std::string record(static_cast<std::size_t>(checked_.relation->record_size() - 1), ' ');
        if (!checked_.file->read_at(offset, std::span<char>(record)).ok())
            return {};
        std::string text;
        for (const RelationField &field : key_.fields())
            text.append(text.empty() ? "" : ", ").append(trimmed(field_text_of(record, field)));
        return shown_bytes(text);
    }

    const CheckedFile &checked_;
    const RecordKey key_;
    const std::string_view what_;
    Findings &findings_;
    Work &work_;
    std::array<std::vector<Entry>, buckets> entries_;
    std::mutex mutex_;
    std::vector<Double> found_;
    std::int64_t count_ = 0;
};

// ---- Foreign keys --------------------------------------------------------------------------------

Key key_of_field(const std::string &field)
{
    return Key{KeyElement{field, {}, {}}};
}

class DanglingKeys
{
public:
    DanglingKeys(const CheckedFile &checked, const std::string &field, const CheckedFile &target,
                 Findings &findings, Work &work)
        : checked_(checked), target_(target), field_(field), key_(*checked.relation, key_of_field(field)),
          target_key_(*target.relation, key_of_field(field)), findings_(findings), work_(work)
    {
    }

    Status find()
    {
        const std::uint64_t passes = passes_for(target_.records, target_.limits);
        for (std::uint64_t number = 0; number < passes; ++number) {
            const Pass pass{number, passes};
            if (Status read = read_target(pass); !read.ok())
                return read;
            if (Status looked = look_up(pass); !looked.ok())
                return looked;
        }
        return Status();
    }

private:
    Status read_target(const Pass &pass)
    {
        for (auto &bucket : hashes_)
            bucket.clear();
        const std::int64_t size = target_.relation->record_size();
        Status read = for_record_blocks(
            target_, block_records, work_,
            [&](const LineRun &run, std::int64_t begin, std::int64_t end, unsigned) {
                std::vector<std::uint64_t> met;
                for (std::int64_t at = begin; at < end; ++at) {
                    const std::uint64_t hash = hash_of(target_key_.of(record_of(run, at, size)));
                    if (pass.has(hash))
                        met.push_back(hash);
                }
                const std::lock_guard lock(mutex_);
                for (const std::uint64_t hash : met)
                    hashes_[bucket_of(hash)].push_back(hash);
                return Status();
            },
            [] {}, [] {});
        if (!read.ok())
            return read;
        return work_.for_blocks(buckets, 1, 0, [this](std::int64_t bucket, std::int64_t, unsigned) {
            auto &hashes = hashes_[static_cast<std::size_t>(bucket)];
            std::sort(hashes.begin(), hashes.end());
            return Status();
        });
    }

    Status look_up(const Pass &pass)
    {
        const std::int64_t size = checked_.relation->record_size();
        const RelationField &place = key_.fields().front();
        std::vector<std::pair<std::int64_t, FindingBatch>> batches; // by their first records
        return for_record_blocks(
            checked_, block_records, work_,
            [&](const LineRun &run, std::int64_t begin, std::int64_t end, unsigned) {
                FindingBatch batch(findings_);
                for (std::int64_t at = begin; at < end; ++at) {
                    const std::string_view record = record_of(run, at, size);
                    const std::string_view text = field_text_of(record, place);
                    const std::uint64_t hash = hash_of(key_.of(record));
                    if (!pass.has(hash) || is_null_field(*place.attribute, text))
                        continue;
                    const auto &hashes = hashes_[bucket_of(hash)];
                    if (!std::binary_search(hashes.begin(), hashes.end(), hash))
                        batch.add(FindingKind::Dangling, field_,
                                  [&] { return dangling(run.offset + at * size, text); });
                }
                const std::lock_guard lock(mutex_);
                batches.emplace_back(begin, std::move(batch));
                return Status();
            },
            [&] { batches.clear(); },
            [&] {
                std::sort(batches.begin(), batches.end(),
                          [](const auto &left, const auto &right) { return left.first < right.first; });
                for (auto &[begin, batch] : batches)
                    batch.add_to(findings_);
            });
    }

    Finding dangling(std::int64_t record_offset, std::string_view text) const
    {
        const RelationField &place = key_.fields().front();
        Finding finding = at_offset(checked_, record_offset);
        finding.offset += place.offset;
        finding.found = shown_bytes(trimmed(text));
        finding.message = concat("is not in table ", target_.relation->name);
        return finding;
    }

    const CheckedFile &checked_;
    const CheckedFile &target_;
    const std::string &field_;
    const RecordKey key_;
    const RecordKey target_key_;
    Findings &findings_;
    Work &work_;
    std::array<std::vector<std::uint64_t>, buckets> hashes_;
    std::mutex mutex_;
};

} // namespace

Status for_record_blocks(const CheckedFile &checked, std::int64_t block, Work &work, const TakeBlock &take,
                         const RunDone &begin_run, const RunDone &done)
{
    RecordLines lines(*checked.file, checked.relation->record_size(), checked.size,
                      checked.limits.piece_bytes);
    return lines.read(
        [&](const LineRun &run) {
            begin_run();
            Status taken = work.for_blocks(run.count, block, 0,
                                           [&](std::int64_t begin, std::int64_t end, unsigned thread) {
                                               return take(run, begin, end, thread);
                                           });
            if (!taken.ok())
                return taken;
            done();
            checked.advance(run.count * checked.relation->record_size());
            return Status();
        },
        [](const BadLine &) { return Status(); });
}

Status find_double_keys(const CheckedFile &checked, const Key &key, std::string_view what, Findings &findings,
                        Work &work)
{
    DoubleKeys doubles(checked, key, what, findings, work);
    return doubles.find();
}

Status find_dangling_keys(const CheckedFile &checked, const std::string &field, const CheckedFile &target,
                          Findings &findings, Work &work)
{
    DanglingKeys dangling(checked, field, target, findings, work);
    return dangling.find();
}

} // namespace orvane
