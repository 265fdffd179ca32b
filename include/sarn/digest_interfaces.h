// SPDX-License-Identifier: Apache-2.0
/// \file
/// Digests and their types.
#pragma once

#include "sarn/object_model.h"

#include "ul/data_stream.h"

namespace sarn {

class IDigest;

/// A digest algorithm: names it and creates running digests. It has no mutable state: any number of threads may use one
/// object at once.
class SARN_EXPORT IDigestType : public virtual ul::IBase {
public:
    IDigestType();
    IDigestType(const IDigestType&);
    IDigestType(IDigestType&&) noexcept;
    IDigestType& operator=(const IDigestType&);
    IDigestType& operator=(IDigestType&&) noexcept;
    ~IDigestType() override;

    /// The identifier, for example "sha1".
    virtual ul::String getID() = 0;
    /// Size of a finished digest in bytes.
    virtual int getDigestSize() const = 0;
    /// Creates a running digest, ready for update(). It keeps a reference to this type.
    virtual ul::P<IDigest> createDigest() = 0;
};

/// A running digest. Owned by one thread at a time.
///
/// A digest is running after creation and reset(), and finished after finish(). update() on a finished digest raises
/// ul::CBadStateError "IDigest::update cannot be called after finish has been called."; reading the result of a running
/// digest raises ul::CBadStateError "IDigest::finish has not been called yet.".
class SARN_EXPORT IDigest : public virtual ul::IBase {
public:
    IDigest();
    IDigest(const IDigest&);
    IDigest(IDigest&&) noexcept;
    IDigest& operator=(const IDigest&);
    IDigest& operator=(IDigest&&) noexcept;
    ~IDigest() override;

    /// The type that created this digest.
    virtual ul::PC<IDigestType> getType() = 0;
    /// Size of the finished digest in bytes.
    virtual int getDigestSize() const = 0;

    /// Adds `length` bytes. They are not copied.
    ///
    /// Null data has a special meaning. For a hash it means no data, and `length` must be 0. A checksum starts over,
    /// regardless of the length, as in zlib; so does a checksum inside a combination, while its other parts continue.
    /// Pass a non-null pointer, even for no data, to avoid both.
    /// \throws ul::CBadStateError after finish(); ul::CInvalidArgError "invalid data size" if `length` is negative,
    ///         except for a checksum with null data.
    virtual void update(const void* data, int length) = 0;
    /// Ends the input and makes the result available. A second call does nothing.
    virtual void finish() = 0;
    /// Starts over with no input.
    virtual void reset() = 0;

    /// The result, getDigestSize() bytes. This object owns it; it is valid until reset(), loadState() or destruction.
    /// \throws ul::CBadStateError before finish().
    virtual const unsigned char* getDigestData() const = 0;
    /// Copies the result, getDigestSize() bytes, to `out`.
    /// \throws ul::CBadStateError before finish().
    virtual void storeDigestData(unsigned char* out) const = 0;

    /// Writes the complete state, running or finished.
    virtual void storeState(ul::CDataOutStream& stream) const = 0;
    /// Restores a state that storeState() of a digest of the same type has written. The stream is untrusted: malformed
    /// states are refused, and no state can cause an out-of-bounds access, now or later. After a failure the digest is
    /// unchanged and can continue; only the stream has advanced.
    /// \throws ul::CError as each class says; "Unexpected end of stream." if the stream is cut short.
    virtual void loadState(ul::CDataInStream& stream) = 0;
};

} // namespace sarn
