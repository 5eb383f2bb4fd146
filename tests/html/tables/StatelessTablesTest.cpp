#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/html/tables/StatelessMachines.h"
#include "tests/support/StateTables.h"
#include "tests/support/TableMachine.h"

// The state tables of the stateless parser, each against the machine below it.

namespace Kestra::Test {
namespace {

const std::filesystem::path ROOT = KESTRA_SOURCES;
constexpr const char* FOLDER = "html/stateless";

struct CheckedTable {
    StateTable table;
    std::vector<TableMachine> machines;
};

/// @return the tables of the folder that have a machine, in its order
std::vector<CheckedTable> MakeCheckedTables() {
    const std::vector<StatelessTable> machines = MakeStatelessTables();
    std::vector<CheckedTable> checked;
    for (const std::string& file : ListSources(ROOT, FOLDER)) {
        std::size_t index = 0;
        for (const StateTable& table : ReadStateTables(file, ReadSource(ROOT, file))) {
            const auto found = std::find_if(machines.begin(), machines.end(), [&](const StatelessTable& candidate) {
                return candidate.source == file && candidate.index == index;
            });
            EXPECT_NE(found, machines.end()) << table.Name() << " has no machine";
            if (found != machines.end())
                checked.push_back({table, found->machines});
            ++index;
        }
    }
    EXPECT_EQ(checked.size(), machines.size()) << "a machine has no table";
    return checked;
}

const std::vector<CheckedTable>& CheckedTables() {
    static const std::vector<CheckedTable> tables = MakeCheckedTables();
    return tables;
}

TEST(StatelessTablesTest, EveryLineThatLooksLikeATableIsOfOneThatIsRead) {
    for (const std::string& file : ListSources(ROOT, FOLDER)) {
        const std::string source = ReadSource(ROOT, file);
        EXPECT_EQ(FindTableLines(source), ListTableLines(ReadStateTables(file, source))) << file;
    }
}

TEST(StatelessTablesTest, EveryTableIsTrue) {
    for (const CheckedTable& checked : CheckedTables()) {
        const StateTable& table = checked.table;
        SCOPED_TRACE(table.Name());
        std::set<CellPlace> used;
        for (const TableMachine& machine : checked.machines) {
            SCOPED_TRACE(machine.note);
            for (const TableDifference& difference : TableChecker(table, machine).Compare(&used, 3))
                ADD_FAILURE() << difference.where << ": " << difference.text;
        }
        for (std::size_t row = 0; row < table.rows.size(); ++row) {
            const std::size_t count = std::max(table.rows[row].cells.size(), table.rows[row].examples.size());
            for (std::size_t i = 0; i < count; ++i)
                EXPECT_EQ(used.count({row, i}), 1U)
                    << "line " << table.rows[row].line << ": cell " << i << " is not used";
        }
    }
}

TEST(StatelessTablesTest, AWrongCellIsFound) {
    std::size_t cells = 0;
    for (const CheckedTable& checked : CheckedTables()) {
        const StateTable& table = checked.table;
        SCOPED_TRACE(table.Name());
        std::vector<TableChecker> checkers;
        std::set<CellPlace> used;
        for (const TableMachine& machine : checked.machines) {
            checkers.emplace_back(table, machine);
            checkers.back().Compare(&used, 1);
        }
        // A result and a state that no machine has.
        for (const CellPlace& place : used) {
            const std::string cell = GetCell(table, place);
            for (const char* wrong : {"999", "drop, to 15", "as 15"}) {
                EXPECT_TRUE(std::any_of(checkers.begin(), checkers.end(),
                                        [&](const TableChecker& checker) { return checker.FindsWrong(place, wrong); }))
                    << "state " << table.rows[place.row].state << ", cell " << place.index << ": [" << cell
                    << "] became [" << wrong << "]";
                ++cells;
            }
        }
    }
    EXPECT_GT(cells, 300U);
}

}  // namespace
}  // namespace Kestra::Test
