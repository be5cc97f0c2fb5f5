/// A family of inputs that grow, and the law by which the cost of an operation on them grows.
#ifndef CORVANE_TESTS_BOUNDS_FAMILY_H
#define CORVANE_TESTS_BOUNDS_FAMILY_H

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/bounds/counting.h"

namespace Corvane::Testing {

/// From the best to the worst.
enum class Law
{
    constant,
    linear,
    linearithmic,
    quadratic,
    cubic,
    worse
};

struct Family
{
    const char* name;
    const char* operation; // on an input of size n
    std::size_t size;      // the smallest; the others are 4 and 16 times as large
    Law steps;
    Law bytes;
    std::function<Cost(std::size_t)> measure;
};

std::ostream& operator<<(std::ostream& out, Law law);

std::vector<Family> synopsisFamilies();
std::vector<Family> lineFamilies();
std::vector<Family> fileFamilies();
std::vector<Family> entryFamilies();

} // namespace Corvane::Testing

#endif
