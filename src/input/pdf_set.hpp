// The data of one sample, and the capacities of the run.
#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>

namespace dorvek::input {

inline constexpr std::int32_t maxbin = 10000;  // bins per sample
inline constexpr std::int32_t maxpdf = 10;     // partial PDFs per sample
inline constexpr std::int32_t maxsamp = 2;     // samples per set of data

// One value per bin.
using Column = std::array<float, maxbin>;

// The content of one PDF file. What stands beyond nbins and beyond the partials held means nothing.
struct PdfSet {
    std::int32_t nbins = 0;           // bins read, 0 .. maxbin
    std::int32_t npdfs = 0;           // partials per bin, as declared
    Column r{};                       // position of each bin, in the file's unit of length
    std::array<Column, maxpdf> g{};   // value of each partial PDF at each bin
    std::array<Column, maxpdf> cn{};  // its running coordination number, atoms
};

// The partials that a set really holds, 0 .. maxpdf: none if the declared number is negative, the
// first maxpdf of more.
[[nodiscard]] inline std::size_t held_partials(const PdfSet& set) {
    return static_cast<std::size_t>(std::min(std::max(set.npdfs, 0), maxpdf));
}

// Does the set hold partial `ipdf`, counted from 1?
[[nodiscard]] inline bool holds_partial(const PdfSet& set, std::int32_t ipdf) {
    return ipdf >= 1 && static_cast<std::size_t>(ipdf) <= held_partials(set);
}

// The first `count` values of a column.
[[nodiscard]] inline std::span<const float> first_bins(const Column& column, std::int32_t count) {
    assert(count >= 0 && count <= maxbin);
    return std::span(column).first(static_cast<std::size_t>(count));
}

// Bins ilo .. ihi of a column, counted from 1, both ends included.
[[nodiscard]] inline std::span<const float> window_of(const Column& column, std::int32_t ilo,
                                                      std::int32_t ihi) {
    assert(ilo >= 1 && ilo <= ihi);
    return first_bins(column, ihi).subspan(static_cast<std::size_t>(ilo - 1));
}

}  // namespace dorvek::input
