#pragma once

#include <gmtl/Vec.h>

namespace gmtl {

/// A quaternion: x, y, z, w in this order, no rotation after construction.
template <typename DATA_TYPE>
class Quat {
public:
    using DataType = DATA_TYPE;

    enum Params { Size = 4 };

    Quat() : mData(DATA_TYPE(0), DATA_TYPE(0), DATA_TYPE(0), DATA_TYPE(1)) {}
    Quat(const DATA_TYPE x, const DATA_TYPE y, const DATA_TYPE z, const DATA_TYPE w) : mData(x, y, z, w) {}

    void set(const DATA_TYPE x, const DATA_TYPE y, const DATA_TYPE z, const DATA_TYPE w) { mData.set(x, y, z, w); }

    void get(DATA_TYPE& x, DATA_TYPE& y, DATA_TYPE& z, DATA_TYPE& w) const {
        x = mData[0];
        y = mData[1];
        z = mData[2];
        w = mData[3];
    }

    DATA_TYPE& operator[](const int index) { return mData[static_cast<unsigned>(index)]; }
    const DATA_TYPE& operator[](const int index) const { return mData[static_cast<unsigned>(index)]; }

    const DATA_TYPE* getData() const { return mData.getData(); }

    Vec<DATA_TYPE, 4> mData;
};

using Quatf = Quat<float>;
using Quatd = Quat<double>;

} // namespace gmtl
