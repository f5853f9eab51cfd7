// An ordered vector of values: it grows at its end, keeps the order in which values were appended
// and owns them.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

template <class T>
class RWTValOrderedVector {
public:
    RWTValOrderedVector() = default;
    RWTValOrderedVector(std::initializer_list<T> values) : valuesM(values) {}

    void append(T value) { valuesM.push_back(std::move(value)); }
    // Empties the vector and keeps its storage.
    void clear() noexcept { valuesM.clear(); }

    std::size_t entries() const noexcept { return valuesM.size(); }
    // The position counts from 0 and must be less than entries().
    T& operator[](std::size_t position) { return valuesM[position]; }
    T const& operator[](std::size_t position) const { return valuesM[position]; }

    auto begin() noexcept { return valuesM.begin(); }
    auto end() noexcept { return valuesM.end(); }
    auto begin() const noexcept { return valuesM.begin(); }
    auto end() const noexcept { return valuesM.end(); }

    friend bool operator==(RWTValOrderedVector const&, RWTValOrderedVector const&) = default;

private:
    std::vector<T> valuesM;
};
