// The headers that most sources of the host include, precompiled for its rooms, belong to this
// file.
