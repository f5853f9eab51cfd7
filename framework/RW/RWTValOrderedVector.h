// An ordered vector that owns its values, in the order in which they were appended. Emptying it
// keeps the storage, also that of the elements, so that refilling it with values of similar size
// allocates nothing; only an unusually long one frees its storage.
#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

template <class T>
class RWTValOrderedVector {
public:
    RWTValOrderedVector() = default;
    RWTValOrderedVector(std::initializer_list<T> values) : valuesM(values), countM(values.size()) {}

    RWTValOrderedVector(RWTValOrderedVector const&) = default;
    RWTValOrderedVector(RWTValOrderedVector&& other) noexcept
        : valuesM(std::move(other.valuesM)), countM(std::exchange(other.countM, 0)) {}
    RWTValOrderedVector& operator=(RWTValOrderedVector other) noexcept {
        valuesM.swap(other.valuesM);
        std::swap(countM, other.countM);
        return *this;
    }

    void append(T const& value) {
        if (countM < valuesM.size()) {
            valuesM[countM] = value;
        } else {
            valuesM.push_back(value);
        }
        ++countM;
    }
    void clear() noexcept {
        constexpr std::size_t usualLength = 32;
        if (std::exchange(countM, 0) > usualLength) {
            std::vector<T>().swap(valuesM);
        }
    }

    std::size_t entries() const noexcept { return countM; }
    // The position counts from 0 and must be less than entries().
    T& operator[](std::size_t position) { return valuesM[position]; }
    T const& operator[](std::size_t position) const { return valuesM[position]; }

    T* begin() noexcept { return valuesM.data(); }
    T* end() noexcept { return valuesM.data() + countM; }
    T const* begin() const noexcept { return valuesM.data(); }
    T const* end() const noexcept { return valuesM.data() + countM; }

    friend bool operator==(RWTValOrderedVector const& a, RWTValOrderedVector const& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    }

private:
    std::vector<T> valuesM;
    // How many of the values are in use; the rest are kept for their storage.
    std::size_t countM = 0;
};
