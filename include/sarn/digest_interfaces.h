// SPDX-License-Identifier: Apache-2.0
/// \file
/// Digests and their types.
#pragma once

#include "sarn/object_model.h"

#include "ul/data_stream.h"

namespace sarn {

class IDigest;

/// A kind of digest: names an algorithm and creates running digests of it. It keeps no state that changes: any number
/// of threads may use one object at once.
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
    /// Length of a finished digest in bytes.
    virtual int getDigestSize() const = 0;
    /// A new running digest, ready for update(). It keeps a reference to this type.
    virtual ul::P<IDigest> createDigest() = 0;
};

/// A running digest. Owned by one thread at a time.
///
/// It is running after its creation and after reset(), and finished after finish(). In the wrong state update() raises
/// ul::CBadStateError "IDigest::update cannot be called after finish has been called.", and what reads the result
/// raises ul::CBadStateError "IDigest::finish has not been called yet.".
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
    /// Length of the finished digest in bytes.
    virtual int getDigestSize() const = 0;

    /// Feeds `length` bytes, which are read in place.
    ///
    /// A hash takes null data for nothing; `length` must be 0 then. A checksum takes null data for the request to start
    /// over, whatever the length, as zlib does, and so does a checksum that is part of a combination, while its other
    /// parts go on. Hand over a pointer that is not null, even if there is nothing to feed, and neither can happen.
    /// \throws ul::CBadStateError after finish(); ul::CInvalidArgError "invalid data size" if `length` is negative and
    ///         a checksum is not given null data
    virtual void update(const void* data, int length) = 0;
    /// Ends the input, so that the result can be read. A second call changes nothing.
    virtual void finish() = 0;
    /// Starts over without input.
    virtual void reset() = 0;

    /// The result, getDigestSize() bytes, owned by this object; valid until reset(), loadState() or its end.
    /// \throws ul::CBadStateError before finish()
    virtual const unsigned char* getDigestData() const = 0;
    /// Copies the result, getDigestSize() bytes, to `out`.
    /// \throws ul::CBadStateError before finish()
    virtual void storeDigestData(unsigned char* out) const = 0;

    /// Writes the complete state, running or finished.
    virtual void storeState(ul::CDataOutStream& stream) const = 0;
    /// Takes over a state that storeState() of a digest of the same type has written. The stream may hold anything:
    /// what cannot be a state is refused, and neither then nor later is memory touched that is not this object's. After
    /// a failure the digest is as it was before and goes on from there; only the stream has moved.
    /// \throws ul::CError as each class says; "Unexpected end of stream." if the stream is cut short.
    virtual void loadState(ul::CDataInStream& stream) = 0;
};

} // namespace sarn
