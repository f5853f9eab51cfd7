// An ordered vector of pointers to objects that it doesn't own.
#pragma once

#include <cstddef>
#include <vector>

template <class T>
class RWTPtrOrderedVector {
public:
    void append(T* object) { objectsM.push_back(object); }
    // Empties the vector and keeps its storage.
    void clear() noexcept { objectsM.clear(); }

    std::size_t entries() const noexcept { return objectsM.size(); }
    // The position counts from 0 and must be less than entries().
    T* operator[](std::size_t position) const { return objectsM[position]; }

private:
    std::vector<T*> objectsM;
};
