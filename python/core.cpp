// dorvek._core: arrays in, numbers out. Another thin edge on the routines of the program; what is
// Python's own (named tuples, warnings, data frames) stands in dorvek/__init__.py. Arguments become
// floats while the interpreter is held, and it is let go while numbers are crunched.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "answer.hpp"
#include "data_file.hpp"
#include "doubts.hpp"
#include "driver/analyse_window.hpp"
#include "driver/report.hpp"
#include "failure.hpp"
#include "find_peaks.hpp"
#include "grid.hpp"
#include "input/pdf_set.hpp"
#include "running.hpp"
#include "weight.hpp"

namespace {

using namespace dorvek;
namespace py = pybind11;

template <typename Number>
using Array = py::array_t<Number, py::array::c_style | py::array::forcecast>;
using Floats = Array<float>;
using Texts = std::vector<std::string>;

// A sample as it came: r, g and, if it is given, n, of one length.
struct Sample {
    Floats r;
    Floats g;
    std::optional<Floats> n;
};

template <typename Number>
std::span<const Number> span_of(const Array<Number>& values) {
    return {values.data(), static_cast<std::size_t>(values.size())};
}

// A column of real numbers, made to be of this type.
template <typename Number = float>
Array<Number> column_of(const char* name, py::handle given) {
    const std::string says = std::string(name) + ": ";
    const auto array = py::array::ensure(given);
    if (!array || std::strchr("biuf", array.dtype().kind()) == nullptr) {
        throw py::type_error(says + "an array of real numbers is needed");
    }
    if (array.ndim() != 1) {
        throw py::value_error(says + "one dimension is needed, not " +
                              std::to_string(array.ndim()));
    }
    return Array<Number>::ensure(array);
}

template <typename Number>
void require_finite(const char* name, std::span<const Number> values) {
    if (!std::ranges::all_of(values, [](Number x) { return std::isfinite(x); })) {
        throw py::value_error(std::string(name) + ": NaN, infinite or too large");
    }
}

void require_lengths(bool agree) {
    if (!agree) throw py::value_error("the arrays differ in length");
}

Sample sample_of(py::handle r, py::handle g, py::handle n) {
    Sample sample{.r = column_of("r", r), .g = column_of("g", g), .n = {}};
    if (!n.is_none()) sample.n = column_of("n", n);
    const py::ssize_t bins = sample.r.size();
    require_lengths(sample.g.size() == bins && (!sample.n || sample.n->size() == bins));
    if (bins == 0) throw py::value_error("there are no bins");
    if (bins > input::maxbin) {
        throw py::value_error("more than " + std::to_string(input::maxbin) + " bins");
    }
    require_finite("r", span_of(sample.r));
    return sample;
}

double real_of(const char* name, py::handle given, double least, double most) {
    const double value = PyFloat_AsDouble(given.ptr());
    if (PyErr_Occurred() != nullptr) throw py::error_already_set();
    if (value >= least && value <= most) return value;
    throw py::value_error(std::string(name) + ": " + std::string(py::str(given)) +
                          " is no number from " + std::string(py::str(py::float_(least))) + " to " +
                          std::string(py::str(py::float_(most))));
}

float limit_of(const char* name, py::handle given) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return static_cast<float>(real_of(name, given, -infinity, infinity));
}

std::int32_t whole_of(const char* name, py::handle given, std::int32_t least) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    const auto index = py::reinterpret_steal<py::object>(PyNumber_Index(given.ptr()));
    if (!index) throw py::error_already_set();
    int overflow = 0;
    const long long value = PyLong_AsLongLongAndOverflow(index.ptr(), &overflow);
    if (overflow == 0 && value >= least && value <= most) return static_cast<std::int32_t>(value);
    throw py::value_error(std::string(name) + ": " + std::string(py::str(index)) +
                          " is no whole number from " + std::to_string(least) + " to " +
                          std::to_string(most));
}

// Room for the samples of one call. It is large, and little of it is touched; the thread's next
// call uses it again.
std::array<input::PdfSet, input::maxsamp>& room() {
    thread_local const auto sets = std::make_unique<std::array<input::PdfSet, input::maxsamp>>();
    return *sets;  // NOLINT(clang-analyzer-cplusplus.NewDelete): the analyzer ends it here
}

// Makes a set of one partial of a sample, and adds what is to be said of its grid. Without n, CN
// and its error come out as NaN.
void fill(input::PdfSet& set, const Sample& sample, Texts& said) {
    tools::add_grid_doubts(span_of(sample.r), said);
    set.nbins = static_cast<std::int32_t>(sample.r.size());
    set.npdfs = 1;
    std::ranges::copy(span_of(sample.r), set.r.begin());
    std::ranges::copy(span_of(sample.g), set.g[0].begin());
    if (sample.n) {
        std::ranges::copy(span_of(*sample.n), set.cn[0].begin());
    } else {
        std::fill_n(set.cn[0].begin(), set.nbins, std::numeric_limits<float>::quiet_NaN());
    }
}

py::list headings_of(std::span<const driver::Line> lines) {
    py::list headings;
    for_each_number(lines, [&](const driver::Field& field) { headings.append(field.heading); });
    return headings;
}

py::list values_of(std::span<const driver::Line> lines, const driver::Report& report,
                   std::size_t s) {
    py::list values;
    for_each_number(
        lines, [&](const driver::Field& field) { values.append(number_of(field, report, s)); });
    return values;
}

// Median and top of the window of each sample.
using Places = std::array<std::array<float, 2>, input::maxsamp>;

// The fields of a Peak: sample `s`, counted from 0, of the report.
py::list peak_of(const driver::Report& report, const Places& places, std::size_t s) {
    py::list values = values_of(driver::sample_lines(), report, s);
    for (const float place : places[s]) values.append(place);
    return values;
}

// Fills report.found, given its limits as typed, and finds the median and the top of each sample.
Places analyse(std::span<const input::PdfSet> sets, std::int64_t constraints,
               driver::Report& report, Texts& said) {
    const auto ipdf = std::span(report.ipdf).first(sets.size());
    const driver::Found found = analyse_window(sets, ipdf, constraints, report.found);
    const auto& [rmin, rmax, ilo, ihi] = report.found.window;
    if (found != driver::Found::no_data && ilo <= ihi) {
        for (const input::PdfSet& set : sets)
            require_finite("g", input::window_of(set.g[0], ilo, ihi));
    }
    if (found != driver::Found::peak) throw py::value_error(std::string(message_of(found)));
    tools::add_doubts(sets, ipdf, report.found, said);
    Places places{};
    for (std::size_t s = 0; s < sets.size(); ++s) {
        const input::PdfSet& set = sets[s];
        const auto r = input::window_of(set.r, ilo, ihi);
        const auto weights = input::window_of(set.g[0], ilo, ihi);
        places[s] = {tools::median_of(r, weights, set.r[1] - set.r[0]), tools::top_of(r, weights)};
    }
    return places;
}

driver::Report report_of(std::int32_t nsamp, py::handle rmin, py::handle rmax) {
    driver::Report report{.nsamp = nsamp, .ipdf = {1, 1}};
    report.found.window.rmin = limit_of("rmin", rmin);
    report.found.window.rmax = limit_of("rmax", rmax);
    return report;
}

py::tuple peak(py::handle r, py::handle g, py::handle n, py::handle rmin, py::handle rmax,
               const std::string& weight) {
    const bool is_r2 = weight == "r2";
    if (!is_r2 && weight != "g") throw py::value_error("weight is neither g nor r2: " + weight);
    const Sample sample = sample_of(r, g, n);
    driver::Report report = report_of(1, rmin, rmax);
    Places places{};
    Texts said;
    {
        const py::gil_scoped_release release;
        input::PdfSet& set = room()[0];
        fill(set, sample, said);
        const auto bins = span_of(sample.r);
        if (is_r2) tools::weigh_r2(bins, std::span(set.g[0]).first(bins.size()));
        places = analyse(std::span(&set, 1), 0, report, said);
    }
    if (is_r2) report.found.stats[0].dCN = std::numeric_limits<float>::quiet_NaN();
    return py::make_tuple(peak_of(report, places, 0), said);
}

py::tuple compare(py::handle r1, py::handle g1, py::handle n1, py::handle r2, py::handle g2,
                  py::handle n2, py::handle rmin, py::handle rmax, py::handle constraints) {
    const std::array samples{sample_of(r1, g1, n1), sample_of(r2, g2, n2)};
    driver::Report report = report_of(2, rmin, rmax);
    const std::int32_t ncons =
        whole_of("constraints", constraints, std::numeric_limits<std::int32_t>::min());
    Places places{};
    Texts said;
    {
        const py::gil_scoped_release release;
        auto& sets = room();
        fill(sets[0], samples[0], said);
        Texts of_second;
        fill(sets[1], samples[1], of_second);
        for (const std::string& what : of_second) said.push_back("second: " + what);
        const std::string_view resampled = driver::reconcile(sets[0], sets[1]);
        if (!resampled.empty()) said.emplace_back(resampled);
        places = analyse(sets, ncons, report, said);
    }
    return py::make_tuple(peak_of(report, places, 0), peak_of(report, places, 1),
                          values_of(driver::statistics_lines(), report, 0), said);
}

py::tuple find_peaks(py::handle r, py::handle g, py::handle range, py::handle prominence,
                     py::handle smooth) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const Sample sample = sample_of(r, g, py::none());
    const auto rs = span_of(sample.r);
    const auto gs = span_of(sample.g);
    require_finite("g", gs);
    tools::PeakSearch search{.range = {},
                             .prominence = real_of("prominence", prominence, 0, infinity),
                             .smooth = real_of("smooth", smooth, 0, 1)};
    if (!range.is_none()) {
        const auto limits = py::tuple(py::reinterpret_borrow<py::object>(range));
        if (limits.size() != 2) throw py::value_error("range: two limits are needed");
        search.range = {.from = limit_of("range", limits[0]), .to = limit_of("range", limits[1])};
        if (!(search.range.from < search.range.to)) {
            throw py::value_error("range: the first limit has to lie below the second");
        }
    }
    Texts said;
    std::vector<input::Window> windows;
    std::vector<tools::Highest> tops;
    {
        const py::gil_scoped_release release;
        tools::add_grid_doubts(rs, said);
        windows = tools::find_peaks(rs, gs, search);
        for (const input::Window& window : windows)
            tops.push_back(tools::highest_of(rs, gs, window));
    }
    py::list found;
    for (std::size_t k = 0; k < windows.size(); ++k) {
        const auto& [mode, height, note] = tops[k];
        found.append(py::make_tuple(windows[k].rmin, windows[k].rmax, mode, height, note));
    }
    return py::make_tuple(found, said);
}

Floats running(py::handle r, py::handle g, py::handle density) {
    const auto rs = column_of<double>("r", r);
    const auto gs = column_of<double>("g", g);
    const double rho = real_of("density", density, std::numeric_limits<double>::min(),
                               std::numeric_limits<double>::max());
    const std::span grid = span_of(rs);
    require_lengths(rs.size() == gs.size());
    require_finite("r", grid);
    require_finite("g", span_of(gs));
    if (grid.size() < 2) throw py::value_error("fewer than two bins");
    const bool ascends = grid.back() > grid.front();
    if (!ascends ||
        tools::out_of_step(grid.size(), [&](std::size_t i) { return grid[i]; }) < grid.size()) {
        throw py::value_error("r does not ascend in even steps");
    }
    const std::vector<double> n = tools::running_numbers(grid, span_of(gs), rho, grid);
    Floats rounded(rs.size());
    std::ranges::transform(n, rounded.mutable_data(),
                           [](double x) { return static_cast<float>(x); });
    return rounded;
}

py::tuple read_file(const std::string& path, py::handle partials) {
    std::optional<std::int32_t> declared;
    if (!partials.is_none()) declared = whole_of("partials", partials, 0);
    input::PdfSet& set = room()[0];
    Texts said;
    {
        const py::gil_scoped_release release;
        said = tools::load_pdf(path, declared, set);
    }
    const auto bins = static_cast<std::size_t>(set.nbins);
    const std::size_t columns = held_partials(set);
    py::array_t<float> r(std::array{bins});
    std::copy_n(set.r.begin(), bins, r.mutable_data());
    // Each partial lies in one piece, so that a column of the result is passed on without a copy.
    const auto in_pieces = [&](const auto& from) {
        py::array_t<float> to({bins, columns}, {sizeof(float), bins * sizeof(float)});
        for (std::size_t p = 0; p < columns; ++p) {
            std::copy_n(from[p].begin(), bins, to.mutable_data() + p * bins);
        }
        return to;
    };
    return py::make_tuple(r, in_pieces(set.g), in_pieces(set.cn), said);
}

// The columns of a table of results, cell by cell as text, become those of an answer. Numbers that
// are not known become NaN.
py::tuple replicas(const Texts& headings, const std::vector<Texts>& columns, const std::string& by,
                   const Texts& each, const Texts& of, const std::string& pair,
                   const Texts& compare, const Texts& window) {
    const tools::Question question{
        .by = by, .each = each, .of = of, .pair = pair, .compare = compare, .window = window};
    Texts said;
    tools::Answer answer;
    {
        const py::gil_scoped_release release;
        const auto say = [&](const std::string& what) { said.push_back(what); };
        std::size_t taken = 0;
        const auto next = [&](Texts& row) {
            if (columns.empty() || taken == columns[0].size()) return false;
            row.clear();
            for (const Texts& column : columns) row.push_back(column[taken]);
            ++taken;
            return true;
        };
        answer =
            answer_of(question, {.headings = headings, .next = next, .tell = say, .complain = say});
    }
    py::list lines;
    for (const auto& [cells, numbers] : answer.lines) {
        py::list line = py::cast(cells);
        for (const auto& number : numbers) {
            line.append(number.value_or(std::numeric_limits<double>::quiet_NaN()));
        }
        lines.append(line);
    }
    return py::make_tuple(answer.headings, lines, said);
}

}  // namespace

PYBIND11_MODULE(_core, module) {
    // NOLINTNEXTLINE(performance-unnecessary-value-param): pybind11 takes no other
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            if (thrown) std::rethrow_exception(thrown);
        } catch (const tools::Failure& failure) {
            PyErr_SetString(PyExc_ValueError, failure.what());
        } catch (const tools::WrongCall& call) {
            PyErr_SetString(PyExc_ValueError, call.what());
        }
    });
    module.attr("version") = DORVEK_VERSION;
    module.attr("sample_headings") = headings_of(driver::sample_lines());
    module.attr("statistics_headings") = headings_of(driver::statistics_lines());
    module.def("peak", peak);
    module.def("compare", compare);
    module.def("find_peaks", find_peaks);
    module.def("read", read_file);
    module.def("running", running);
    module.def("replicas", replicas);
}
