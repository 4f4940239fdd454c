#include <algorithm>
#include <string>
#include <string_view>

#include "cell_text.h"
#include "queries.h"
#include "request_call.h"
#include "request_handlers.h"

namespace {

// The sample is the head of the table, on purpose: what it costs, and what it answers, must not depend on
// where records happen to lie.
constexpr int64_t sampledRecords = 50;

int shownLength(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size())).size();
}

struct Sample {
    bool allNull = true;
    int width = 0; // characters
};

Sample sampled(Dbptr field, int64_t recordCount)
{
    const char *const null = queriedText(field, dbNULL);
    // A copy: later calls of the library may reuse a borrowed text's memory.
    const std::string nullText(null ? null : "");
    Sample sample;
    sample.width = shownLength(nullText);
    const int64_t end = std::min(recordCount, sampledRecords);
    for (field.record = 0; field.record < end; ++field.record) {
        const bool read = withText(field, [&](char *text, int64_t) {
            const std::string_view value = strtrim(text);
            if (value == nullText)
                return;
            sample.allNull = false;
            sample.width = std::max(sample.width, shownLength(value));
        });
        // A table cut short while it is read: what has been seen is the sample.
        if (!read)
            break;
    }
    return sample;
}

} // namespace

namespace requests {

void sampleField(const RequestCall &call)
{
    const int64_t recordCount = queriedNumber(call.input, dbRECORD_COUNT);
    Sample sample;
    if (recordCount > 0)
        sample = sampled(call.input, recordCount);
    else
        sample.width = static_cast<int>(queriedNumber(call.input, dbFIELD_SIZE));
    call.response->setValue(QList<QVariant>{sample.allNull, sample.width});
}

} // namespace requests
