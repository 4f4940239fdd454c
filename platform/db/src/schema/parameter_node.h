// Reading a parameter file with every deviation noted: a mapping or list of the utility library, together
// with the findings that reading it leaves.
#pragma once

#include "base/near_names.h"
#include "base/status.h"
#include "schema/findings.h"

#include <orvane/util.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

struct ParameterFileRelease {
    void operator()(Pf *pf) const { pffree(pf); }
};
using ParameterFile = std::unique_ptr<Pf, ParameterFileRelease>;

// Parses a text as a parameter file; `file` names it in messages. Text with zero bytes is refused as
// binary. What the parser says about the place stands in the error log before our own failure.
Result<ParameterFile> parse_parameters(const std::string &text, const std::string &file);

struct PlacedText {
    std::string text;
    Place place;
};

// A mapping inside a parameter file. Getters note a value of the wrong kind and answer nothing.
class ParameterMapping
{
public:
    // `what` names the mapping in findings: "attribute lat".
    ParameterMapping(const Pf *pf, std::string what, Place place, Findings &findings)
        : pf_(pf), what_(std::move(what)), place_(place), findings_(&findings)
    {
    }

    const std::string &what() const { return what_; }
    Place place() const { return place_; }

    std::vector<std::string> keys() const;
    Place key_place(const std::string &key) const;
    Place value_place(const std::string &key) const;

    bool has(const std::string &key) const;
    // Notes keys that are not among the known ones.
    void refuse_other_keys(const std::vector<std::string_view> &known) const;
    // Notes a missing key and answers whether it is there.
    bool require(const std::string &key) const;

    std::optional<PlacedText> text(const std::string &key) const;
    // The text, or an empty one where there is none.
    std::string text_or_empty(const std::string &key) const;
    // A list, each element through `text_of`/`mapping_of`; none when absent.
    std::optional<ParameterMapping> mapping(const std::string &key, const std::string &what) const;

    struct Element {
        Place place;
        std::optional<std::string> text; // a scalar
        const Pf *mapping = nullptr;     // a mapping
        bool is_list = false;            // neither
    };
    // The elements of a list. A single text stands for a list of one where `single_allowed`.
    std::optional<std::vector<Element>> list(const std::string &key, bool single_allowed = false) const;
    // A list that may hold texts only; other elements are noted and left out.
    std::optional<std::vector<PlacedText>> texts(const std::string &key, bool single_allowed = false) const;

    void note(Place place, std::string text) const { findings_->add(place, std::move(text)); }
    Findings &findings() const { return *findings_; }

private:
    const Pf *pf_;
    std::string what_;
    Place place_;
    Findings *findings_;
};

} // namespace orvane
