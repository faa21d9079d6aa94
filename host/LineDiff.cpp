/* A unified diff by Myers' greedy algorithm ("An O(ND) Difference Algorithm and Its Variations",
   1986).

   The edits from one list of lines to the other are a path through a grid: a step right removes a
   line, a step down adds one, a diagonal step keeps a common line. For each number of edits,
   `frontier` holds the furthest x that so many edits reach on every diagonal k = x - y. The
   frontiers are kept, and walking back through them gives the edits.

   Time and memory grow with the square of the number of edits, since common lines at both ends are
   dropped first. Past `maxEdits` the rest is reported as removed and added as a whole, which is
   correct but longer than necessary. */

#include "LineDiff.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace VespermoorEngine::Host {

namespace {

constexpr int maxEdits = 1000;
constexpr std::ptrdiff_t context = 3;

using Lines = std::vector<std::string_view>;

/* A line that is kept, removed or added, by its printed sign: a blank, a minus or a plus. */
struct Edit {
    char kind;
    std::string_view line;
};

using Edits = std::vector<Edit>;

/* The lines with their newlines, which the last one may lack. */
Lines linesOf(std::string_view text) {
    Lines lines;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return lines;
}

/* The grid of two lists of lines that begin differently, and the search for the path. */
class Grid {
public:
    Grid(const Lines& before, const Lines& after) : columns{before}, rows{after} {}

    Edits edits() { return search() ? walkBack() : replaceAll(); }

private:
    /* The furthest x on each diagonal that `edits` edits reach. */
    struct Frontier {
        explicit Frontier(const int edits) : edits{edits}, furthest(2 * std::size_t(edits) + 1) {}

        int& at(const int diagonal) { return furthest[diagonal + edits]; }
        int at(const int diagonal) const { return furthest[diagonal + edits]; }
        /* Whether the next edit that reaches `diagonal` adds a line instead of removing one. */
        bool goesOnByAdding(const int diagonal) const {
            return diagonal == -edits - 1 ||
                   (diagonal != edits + 1 && at(diagonal - 1) < at(diagonal + 1));
        }

        int edits;
        std::vector<int> furthest;
    };

    bool search();
    bool extend(Frontier& frontier) const;
    Edits walkBack() const;
    Edits replaceAll() const;

    const Lines& columns;
    const Lines& rows;
    std::vector<Frontier> frontiers;
};

/* Returns whether the frontier reaches the end of both lists. */
bool Grid::extend(Frontier& frontier) const {
    const int width = int(columns.size()), height = int(rows.size());
    for (int diagonal = -frontier.edits; diagonal <= frontier.edits; diagonal += 2) {
        int x = 0;
        if (!frontiers.empty()) {
            const Frontier& last = frontiers.back();
            x = last.goesOnByAdding(diagonal) ? last.at(diagonal + 1) : last.at(diagonal - 1) + 1;
        }
        int y = x - diagonal;
        while (x < width && y < height && columns[std::size_t(x)] == rows[std::size_t(y)]) {
            ++x;
            ++y;
        }
        frontier.at(diagonal) = x;
        if (x >= width && y >= height) {
            return true;
        }
    }
    return false;
}

bool Grid::search() {
    for (int edits = 0; edits <= maxEdits; ++edits) {
        Frontier frontier{edits};
        if (extend(frontier)) {
            return true;
        }
        frontiers.push_back(std::move(frontier));
    }
    return false;
}

Edits Grid::walkBack() const {
    Edits edits;
    std::size_t x = columns.size(), y = rows.size();
    for (auto frontier = frontiers.rbegin(); frontier != frontiers.rend(); ++frontier) {
        const int diagonal = int(x) - int(y);
        const bool adding = frontier->goesOnByAdding(diagonal);
        const int before = frontier->at(adding ? diagonal + 1 : diagonal - 1);
        while (x != std::size_t(adding ? before : before + 1)) {
            edits.push_back({' ', columns[--x]});
            --y;
        }
        edits.push_back(adding ? Edit{'+', rows[--y]} : Edit{'-', columns[--x]});
    }
    std::reverse(edits.begin(), edits.end());
    return edits;
}

Edits Grid::replaceAll() const {
    Edits edits;
    for (const std::string_view line : columns) {
        edits.push_back({'-', line});
    }
    for (const std::string_view line : rows) {
        edits.push_back({'+', line});
    }
    return edits;
}

/* All edits, including the common lines at both ends, which need no search. */
Edits editsBetween(Lines before, Lines after) {
    const auto prefix =
        std::mismatch(before.begin(), before.end(), after.begin(), after.end()).first -
        before.begin();
    Edits edits;
    for (const std::string_view line : Lines(before.begin(), before.begin() + prefix)) {
        edits.push_back({' ', line});
    }
    before.erase(before.begin(), before.begin() + prefix);
    after.erase(after.begin(), after.begin() + prefix);
    Lines suffix;
    while (!before.empty() && !after.empty() && before.back() == after.back()) {
        suffix.push_back(before.back());
        before.pop_back();
        after.pop_back();
    }
    const Edits middle = Grid{before, after}.edits();
    edits.insert(edits.end(), middle.begin(), middle.end());
    for (auto line = suffix.rbegin(); line != suffix.rend(); ++line) {
        edits.push_back({' ', *line});
    }
    return edits;
}

bool isChange(const Edit& edit) {
    return edit.kind != ' ';
}

/* The end of the hunk that begins with the change at `first`: changes share a hunk if their
   contexts touch. */
Edits::const_iterator hunkEnd(Edits::const_iterator first, const Edits::const_iterator end) {
    while (true) {
        const auto kept = std::find_if_not(first, end, isChange);
        const auto next = std::find_if(kept, end, isChange);
        if (next == end || next - kept > 2 * context) {
            return kept + std::min(end - kept, context);
        }
        first = next;
    }
}

/* Prints hunks and counts the lines passed. */
class HunkPrinter {
public:
    void print(Edits::const_iterator begin, Edits::const_iterator end);
    void pass(Edits::const_iterator begin, Edits::const_iterator end) {
        oldLine += countOf(begin, end, '+');
        newLine += countOf(begin, end, '-');
    }

    std::string text;

private:
    /* Number of edits other than `excluded`: the lines of one of the two texts. */
    static std::ptrdiff_t countOf(Edits::const_iterator begin, Edits::const_iterator end,
                                  const char excluded) {
        return std::count_if(begin, end, [&](const Edit& edit) { return edit.kind != excluded; });
    }
    /* An empty range has the number of the line before it. */
    static std::string range(const std::ptrdiff_t passed, const std::ptrdiff_t count) {
        return std::to_string(passed + (count == 0 ? 0 : 1)) + "," + std::to_string(count);
    }

    std::ptrdiff_t oldLine = 0;
    std::ptrdiff_t newLine = 0;
};

void HunkPrinter::print(const Edits::const_iterator begin, const Edits::const_iterator end) {
    text += "@@ -" + range(oldLine, countOf(begin, end, '+')) + " +" +
            range(newLine, countOf(begin, end, '-')) + " @@\n";
    for (auto edit = begin; edit != end; ++edit) {
        text += edit->kind;
        text += edit->line;
        if (edit->line.back() != '\n') {
            text += "\n\\ No newline at end of file\n";
        }
    }
    pass(begin, end);
}

} // namespace

std::string unifiedDiff(const std::string_view before, const std::string_view after) {
    const Edits edits = editsBetween(linesOf(before), linesOf(after));
    HunkPrinter printer;
    auto cursor = edits.begin();
    while (true) {
        const auto change = std::find_if(cursor, edits.end(), isChange);
        if (change == edits.end()) {
            return printer.text;
        }
        const auto begin = change - std::min(change - cursor, context);
        const auto end = hunkEnd(change, edits.end());
        printer.pass(cursor, begin);
        printer.print(begin, end);
        cursor = end;
    }
}

} // namespace VespermoorEngine::Host
