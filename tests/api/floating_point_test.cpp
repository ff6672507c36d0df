// floating_point_test.cpp: the library in hosts with floating-point settings of their own, and numbers at
// the ends of their range.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cfenv>
#include <cmath>
#include <csignal>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "host.h"

using Host::Answer;
using support::Built;
using support::Description;

namespace
{

constexpr int kNetworks = 50;  // of Host::network, two large ones among them

/// Gives the host's floating-point settings back at the end of each test.
class FloatingPoint : public testing::Test
{
protected:
    FloatingPoint() { std::fegetenv(&m_before); }
    ~FloatingPoint() override { std::fesetenv(&m_before); }

private:
    std::fenv_t m_before;
};

using Extremes = FloatingPoint;

#if defined(__GLIBC__)
/// Traps on what is no number, on division by zero and on overflow: a SIGFPE ends the process.
constexpr int kTraps = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;

/// The signal that ended work in a process of its own; 0 when none did and work returned true, -1 when it
/// returned false.
int signalOf(const std::function<bool()>& work)
{
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGFPE, SIG_DFL);
        _exit(work() ? 0 : 1);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return -1;
    if (WIFSIGNALED(status)) return WTERMSIG(status);
    return WEXITSTATUS(status) == 0 ? 0 : -1;
}
#endif

struct Mode {
    int mode;
    const char* name;
};
constexpr std::array<Mode, 4> kModes = {{{FE_TONEAREST, "to nearest"},
                                         {FE_UPWARD, "upward"},
                                         {FE_DOWNWARD, "downward"},
                                         {FE_TOWARDZERO, "toward zero"}}};

/// Both energies in turn; a network whose solve goes through its second start, or fails, is as good as any.
Answer solved(const Built& built, int number)
{
    return Host::read(built.circuit(), Host::solve(built, number));
}

bool askedOnce()
{
    return false;
}

int modeInCancel = -1;
int flagsInCancel = -1;
bool noteSettings()
{
    modeInCancel = std::fegetround();
    flagsInCancel = std::fetestexcept(FE_ALL_EXCEPT);
    return false;
}

/// A network with an element of every type, 3 pressures and 2 flows; solves.
Description everyType()
{
    Description description;
    const std::vector<int> types = {
        TAVELL_PIPE,    TAVELL_HAZEN_WILLIAMS_PIPE, TAVELL_GENERAL_LOSS, TAVELL_KV_VALVE, TAVELL_CV_VALVE,
        TAVELL_ORIFICE, TAVELL_CONTROL_VALVE,       TAVELL_PUMP,         TAVELL_LOSS};
    const auto addNode = [&](int type, int constraint, double value) {
        support::NodeData node;
        const auto i = static_cast<double>(description.nodes.size());
        node.at = {10.0 * i, std::fmod(3.0 * i, 7.0), std::fmod(i, 3.0)};
        node.type = type;
        node.constraint = constraint;
        node.value = value;
        description.nodes.push_back(node);
        return static_cast<int>(description.nodes.size()) - 1;
    };
    const auto addElement = [&](int start, int end, int type) {
        support::ElementData element;
        element.start = start;
        element.end = end;
        element.type = type;
        const auto set = [&](int id, double value) {
            element.properties.push_back({static_cast<double>(id), value});
        };
        set(TAVELL_ELEMENT_ROUGHNESS, 1e-4);
        if (type == TAVELL_HAZEN_WILLIAMS_PIPE) set(TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, 120.0);
        if (type == TAVELL_GENERAL_LOSS) {
            set(TAVELL_ELEMENT_GENERAL_LOSS_CK, 0.01);
            set(TAVELL_ELEMENT_GENERAL_LOSS_A, 1.0);
            set(TAVELL_ELEMENT_GENERAL_LOSS_B, 1.0);
            set(TAVELL_ELEMENT_GENERAL_LOSS_C, 5.0);
            set(TAVELL_ELEMENT_GENERAL_LOSS_D, 2.0);
        }
        if (type == TAVELL_KV_VALVE) set(TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, 100.0);
        if (type == TAVELL_CV_VALVE) set(TAVELL_ELEMENT_VALVE_CV_COEFFICIENT, 100.0);
        if (type == TAVELL_ORIFICE) set(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, 0.05);
        if (type == TAVELL_CONTROL_VALVE) set(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, 1.0);
        if (type == TAVELL_PUMP || type == TAVELL_LOSS) {
            element.curveFlows = {0.0, 0.01, 0.02, 0.03};
            if (type == TAVELL_PUMP)
                element.curvePressures = {2e5, 1.8e5, 1.4e5, 0.8e5};
            else
                element.curvePressures = {0.0, 1e4, 4e4, 9e4};
        }
        description.elements.push_back(element);
    };

    const int inlet = addNode(TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, 8e5);
    const int first = addNode(TAVELL_NODE_INTERNAL, TAVELL_CONSTRAINT_PRESSURE, 0.0);
    addElement(inlet, first, TAVELL_PIPE);
    for (const int type : types) {
        const int end = addNode(TAVELL_NODE_INTERNAL, TAVELL_CONSTRAINT_PRESSURE, 0.0);
        addElement(first, end, type);
        const int last = addNode(TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_PRESSURE, 6e5);
        addElement(end, last, TAVELL_PIPE);
    }
    const int out = addNode(TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, 1.0);
    addElement(first, out, TAVELL_PIPE);
    return description;
}

/// Solves, and holds the answer against its documented form: true with finite values for every node and
/// element, or false with reasons and without results.
void expectAnswerInItsForm(const Built& built, bool energy)
{
    const bool isSolved = energy ? built.solveWithTemperatures() : built.solve();
    for (int key = TAVELL_RESULT_REYNOLDS; key <= TAVELL_RESULT_EXTERNAL_MASS_FLOW; ++key) {
        Velcor::Tavell::IResultsSet* const set = built.circuit().GetResults(key);
        ASSERT_EQ(set != nullptr, isSolved) << "key " << key;
        if (!isSolved) continue;
        const std::size_t size =
            set->IsNodal() ? built.circuit().GetNoNodes() : built.circuit().GetNoElements();
        EXPECT_EQ(set->GetSize(), size) << "key " << key;
        for (const double value : built.results(key))
            ASSERT_TRUE(std::isfinite(value)) << "key " << key << ": " << value;
    }
    if (!isSolved) {
        EXPECT_NE(built.feedback(), "");
    }
}

const std::vector<double> kExtremes = {
    5e-324, 2147483648.0, 4294967297.0,          1e-310, 2.2250738585072014e-308, 1e-150,
    1e150,  1e300,        1.7976931348623157e308};

std::string label(int id, double value, std::size_t at)
{
    return std::to_string(id) + " := " + testing::PrintToString(value) + " at " + std::to_string(at);
}

/// Every property of one entity at every extreme value: the positive ones with temperatures, the negative
/// ones without.
void expectAnswers(int firstId, int lastId, std::size_t at,
                   const std::function<Velcor::Tavell::IEntity*(const Built&)>& entityOf)
{
    const Description description = everyType();
    for (int id = firstId; id <= lastId; ++id)
        for (const double extreme : kExtremes)
            for (const double value : {extreme, -extreme}) {
                SCOPED_TRACE(label(id, value, at));
                const Built built(description);
                if (!entityOf(built)->SetProperty(id, value)) continue;
                expectAnswerInItsForm(built, value > 0.0);
                if (testing::Test::HasFatalFailure()) return;
            }
}

}  // namespace

TEST_F(FloatingPoint, the_rounding_mode_of_the_host_is_as_before_and_changes_no_bit_of_an_answer)
{
    for (int number = 0; number < kNetworks; ++number) {
        SCOPED_TRACE(number);
        const Built built(Host::network(number));
        std::fesetround(FE_TONEAREST);
        const Answer usual = solved(built, number);
        for (const Mode& mode : kModes) {
            SCOPED_TRACE(mode.name);
            ASSERT_EQ(std::fesetround(mode.mode), 0);
            const bool isSolved = Host::solve(built, number);
            EXPECT_EQ(std::fegetround(), mode.mode);
            std::fesetround(FE_TONEAREST);
            EXPECT_TRUE(Host::read(built.circuit(), isSolved) == usual);
        }
    }
}

TEST_F(FloatingPoint, the_rounding_mode_of_the_host_does_not_hinder_building_reading_and_exporting)
{
    for (const Mode& mode : kModes) {
        SCOPED_TRACE(mode.name);
        ASSERT_EQ(std::fesetround(mode.mode), 0);
        const Built built(everyType());
        ASSERT_TRUE(built.circuit().Validate());
        ASSERT_TRUE(built.solve());
        const std::string exported = built.circuit().ExportResults();
        const Answer answer = Host::read(built.circuit(), true);
        EXPECT_EQ(std::fegetround(), mode.mode);
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(std::string(built.circuit().ExportResults()), exported);
        EXPECT_EQ(answer.results.size(), 9u);
    }
}

TEST_F(FloatingPoint, the_exception_flags_of_the_host_are_as_before_a_solve)
{
    for (int number = 0; number < kNetworks; ++number) {
        SCOPED_TRACE(number);
        const Built built(Host::network(number));
        for (const int flags : {0, FE_INEXACT, FE_OVERFLOW | FE_INVALID, FE_ALL_EXCEPT}) {
            std::feclearexcept(FE_ALL_EXCEPT);
            std::feraiseexcept(flags);
            const int before =
                std::fetestexcept(FE_ALL_EXCEPT);  // an overflow is inexact too on some machines
            Host::solve(built, number);
            EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), before);
        }
    }
}

TEST_F(FloatingPoint, the_exception_flags_of_the_host_are_as_before_a_solve_that_fails_or_is_refused)
{
    const Built nothing{Description()};
    Description hopeless = everyType();
    hopeless.nodes[0].value = std::numeric_limits<double>::quiet_NaN();
    const Built withoutNumbers(hopeless);
    for (const Built* built : {&nothing, &withoutNumbers}) {
        std::feclearexcept(FE_ALL_EXCEPT);
        EXPECT_FALSE(built->solve());
        EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0);
    }
}

TEST_F(FloatingPoint, cancel_runs_in_the_usual_settings_with_no_flag_up_at_first)
{
    const Built built(everyType());
    std::fesetround(FE_UPWARD);
    std::feraiseexcept(FE_DIVBYZERO);
    ASSERT_TRUE(built.circuit().Solve(false, noteSettings));
    EXPECT_EQ(modeInCancel, FE_TONEAREST);
    EXPECT_EQ(flagsInCancel & FE_DIVBYZERO, 0);
    EXPECT_EQ(std::fegetround(), FE_UPWARD);
    EXPECT_NE(std::fetestexcept(FE_DIVBYZERO), 0);
}

TEST_F(FloatingPoint, other_operations_raise_no_flag_that_tells_of_an_error)
{
    constexpr int kErrors = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;
    std::feclearexcept(FE_ALL_EXCEPT);
    const Built built(everyType());
    built.circuit().Validate();
    built.circuit().IsValid();
    built.solve();
    Host::read(built.circuit(), true);
    int count = 0;
    built.circuit().GetDisconnectedElements(nullptr, 0, &count);
    EXPECT_EQ(std::fetestexcept(kErrors), 0);
}

#if defined(__GLIBC__)
TEST_F(FloatingPoint, traps_of_the_host_do_not_end_it_in_a_solve)
{
    EXPECT_EQ(signalOf([] {
                  feenableexcept(kTraps);
                  for (int number = 0; number < kNetworks; ++number)
                      Host::answerOf(number);
                  return fegetexcept() == kTraps;
              }),
              0);
}

TEST_F(FloatingPoint, traps_of_the_host_do_not_end_it_when_a_solve_meets_what_is_no_number)
{
    EXPECT_EQ(
        signalOf([] {
            const double none = std::numeric_limits<double>::quiet_NaN();
            feenableexcept(kTraps);
            for (const int id : {TAVELL_ELEMENT_DIAMETER, TAVELL_ELEMENT_ROUGHNESS, TAVELL_ELEMENT_AREA}) {
                const Built built(everyType());
                built.element(0)->GetEntity()->SetProperty(id, none);
                built.solve();
            }
            return fegetexcept() == kTraps;
        }),
        0);
}

TEST_F(FloatingPoint, traps_of_the_host_do_not_end_it_when_a_number_overflows_in_a_solve)
{
    EXPECT_EQ(signalOf([] {
                  feenableexcept(kTraps);
                  for (const double value : {1e-310, 1e300}) {
                      const Built built(everyType());
                      built.element(0)->GetEntity()->SetProperty(TAVELL_ELEMENT_DIAMETER, value);
                      built.circuit().Solve(true, askedOnce);
                  }
                  return fegetexcept() == kTraps;
              }),
              0);
}
#endif

#if defined(__x86_64__)
TEST_F(FloatingPoint, subnormal_numbers_that_the_host_has_switched_off_change_no_bit_of_an_answer)
{
    constexpr unsigned kFlushToZero = 0x8000;
    constexpr unsigned kDenormalsAreZero = 0x0040;
    const unsigned usualSettings = _mm_getcsr();
    for (int number = 0; number < kNetworks; ++number) {
        SCOPED_TRACE(number);
        const Built built(Host::network(number));
        const Answer usual = solved(built, number);
        for (const unsigned settings : {kFlushToZero, kDenormalsAreZero, kFlushToZero | kDenormalsAreZero}) {
            _mm_setcsr(usualSettings | settings);
            const bool isSolved = Host::solve(built, number);
            const unsigned after = _mm_getcsr();
            _mm_setcsr(usualSettings);
            EXPECT_EQ(after, usualSettings | settings);
            EXPECT_TRUE(Host::read(built.circuit(), isSolved) == usual);
        }
    }
}
#endif

TEST_F(Extremes, properties_of_elements_give_an_answer_in_its_form)
{
    // those of a type of their own; plain pipes lead from each of them to its outlet
    for (const int e : {0, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19})
        expectAnswers(TAVELL_ELEMENT_DIAMETER, TAVELL_ELEMENT_FIXED_MASS_FLOW, static_cast<std::size_t>(e),
                      [e](const Built& built) { return built.element(e)->GetEntity(); });
}

TEST_F(Extremes, properties_of_nodes_give_an_answer_in_its_form)
{
    const std::size_t count = everyType().nodes.size();
    for (const std::size_t n : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{3}, count - 1})
        expectAnswers(TAVELL_NODE_X, TAVELL_NODE_PRESSURE_AND_FLOW_RATE_CONSTRAINT, n,
                      [n](const Built& built) { return built.node(static_cast<int>(n))->GetEntity(); });
}

TEST_F(Extremes, properties_of_the_circuit_give_an_answer_in_its_form)
{
    expectAnswers(TAVELL_CIRCUIT_GRAVITY_X, TAVELL_CIRCUIT_CALCULATE_VISCOSITY, 0,
                  [](const Built& built) { return built.circuit().GetEntity(); });
}

TEST_F(Extremes, properties_of_the_fluid_give_an_answer_in_its_form)
{
    expectAnswers(TAVELL_FLUID_DEFAULT_TEMPERATURE, TAVELL_FLUID_VISCOSITY_COEFFICIENT_3, 0,
                  [](const Built& built) { return built.circuit().GetFluid()->GetEntity(); });
}

TEST_F(Extremes, constraints_of_every_kind_give_an_answer_in_its_form)
{
    const std::size_t last = everyType().nodes.size() - 1;
    for (const std::size_t n : {std::size_t{0}, std::size_t{3}, last})
        for (int constraint = TAVELL_CONSTRAINT_PRESSURE; constraint <= TAVELL_CONSTRAINT_PRESSURE_AND_FLOW;
             ++constraint)
            for (const double extreme : kExtremes)
                for (const double value : {extreme, -extreme}) {
                    SCOPED_TRACE(label(constraint, value, n));
                    Description description = everyType();
                    description.nodes[n].constraint = constraint;
                    description.nodes[n].value = value;
                    expectAnswerInItsForm(Built(description), false);
                }
}

TEST_F(Extremes, curves_give_an_answer_in_its_form)
{
    const std::size_t count = everyType().elements.size();
    for (std::size_t e = 0; e < count; ++e) {
        if (everyType().elements[e].curveFlows.empty()) continue;
        for (const double extreme : kExtremes)
            for (const double value : {extreme, -extreme})
                for (std::size_t point = 0; point < 4; ++point) {
                    SCOPED_TRACE(label(static_cast<int>(point), value, e));
                    Description description = everyType();
                    description.elements[e].curveFlows[point] = value;
                    expectAnswerInItsForm(Built(description), false);
                    description = everyType();
                    description.elements[e].curvePressures[point] = value;
                    expectAnswerInItsForm(Built(description), false);
                }
    }
}
