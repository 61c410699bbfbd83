#include "driver/report.hpp"

namespace dorvek::driver {

using textio::write_line;

void write_sample_block(textio::Output& output, std::string_view sname, std::int32_t ipdf,
                        const input::Window& window, const analysis::WindowStats& stats) {
    constexpr std::string_view error = " +/- ";
    const analysis::WindowStats& s = stats;
    write_line(output, {separator});
    write_line(output, {" "});
    write_line(output, {sname});
    write_line(output, {" "});
    write_line(output, {"pdf #: ", ipdf});
    write_line(output, {" "});
    write_line(output, {"rmin= ", window.rmin, " rmax= ", window.rmax});
    write_line(output, {" "});
    write_line(output, {"CN=   ", s.CN, error, s.dCN});
    write_line(output, {"Rmea= ", s.Rmea, error, s.dRmea});
    write_line(output, {"Rmod= ", s.Rmod});
    write_line(output, {" "});
    write_line(output, {"var=  ", s.var, error, s.dvar});
    write_line(output, {"varl= ", s.varl, " varr= ", s.varr});
    write_line(output, {"adif= ", s.adif, " arat= ", s.arat});
    write_line(output, {" "});
    write_line(output, {"pmo3= ", s.pmo3, error, s.dpmo3});
    write_line(output, {"skew= ", s.skew, error, s.dskew});
    write_line(output, {" "});
    write_line(output, {"pmo4= ", s.pmo4, error, s.dpmo4});
    write_line(output, {"kurt= ", s.kurt, error, s.dkurt});
    write_line(output, {"cum4= ", s.cum4, error, s.dcum4});
    write_line(output, {" "});
}

void write_statistics_block(textio::Output& output, const stats::ComparisonResult& result) {
    const auto& [mean, variance, distribution] = result;
    write_line(output, {" "});
    write_line(output, {"statistics: "});
    write_line(output, {" "});
    write_line(output, {"doff= ", mean.doff});
    write_line(output, {" "});
    write_line(output, {"different mean value (stud<<,>>0, sgfc=0.0) ?"});
    write_line(output, {"stud= ", mean.stud, " sgfc= ", mean.sgfc});
    write_line(output, {" "});
    write_line(output, {"different variance (stud<<,>>1, sgfc=0.0) ? "});
    write_line(output, {"stud= ", variance.stud, " sgfc= ", variance.sgfc});
    write_line(output, {" "});
    write_line(output, {"different distributions (chsq<<,>>1, sgfc=0.0) ?"});
    write_line(output, {"doff= ", distribution.doff});
    write_line(output, {"chsq= ", distribution.chsq, " sgfc= ", distribution.sgfc});
    write_line(output, {" "});
}

}  // namespace dorvek::driver
