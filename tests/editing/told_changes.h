// What the hook of changes was told, kept so that it can be taken back.
#pragma once

#include "edited.h"

#include <algorithm>
#include <deque>

struct ToldChange {
    explicit ToldChange(const DbChange &told)
        : change(told), records(told.records, told.records + told.count),
          before(told.before ? std::string(told.before, told.count * told.length) : ""),
          after(told.after ? std::string(told.after, told.length) : "")
    {
    }
    // Pointing to what is kept here.
    DbChange borrowed() const
    {
        DbChange told = change;
        told.records = records.data();
        told.before = before.data();
        told.after = after.data();
        return told;
    }

    DbChange change;
    std::vector<int64_t> records;
    std::string before;
    std::string after;
};

class ToldChanges
{
public:
    ToldChanges()
    {
        dbset_change_hook(
            [](const DbChange *told, void *kept) {
                auto &self = *static_cast<ToldChanges *>(kept);
                if (told->place.database == self.database)
                    self.changes.emplace_back(*told);
            },
            this);
    }
    ~ToldChanges() { dbset_change_hook(nullptr, nullptr); }

    // Takes all back, the last first, or does all again; answers how many records were left alone, or the
    // first failure.
    int64_t take_back() const
    {
        int64_t sum = 0;
        for (auto told = changes.rbegin(); told != changes.rend(); ++told)
            if (const int64_t left = one(*told, dbtake_back); left < 0)
                return left;
            else
                sum += left;
        return sum;
    }
    int64_t do_again() const
    {
        int64_t sum = 0;
        for (const ToldChange &told : changes)
            if (const int64_t left = one(told, dbdo_again); left < 0)
                return left;
            else
                sum += left;
        return sum;
    }

    int64_t database = -1; // changes in others are those of another program
    std::deque<ToldChange> changes;

private:
    static int64_t one(const ToldChange &told, int (*act)(const DbChange *, int64_t *))
    {
        const DbChange change = told.borrowed();
        int64_t left = -1;
        const int code = act(&change, &left);
        return code < 0 ? code : left;
    }
};
