#ifndef QUORVEX_MD5_H
#define QUORVEX_MD5_H

#include "Export.h"

/// @file
/// MD5 (RFC 1321) for the host, as a C interface. One record serves one thread at a time; different records
/// are independent of each other. Nothing is allocated, so nothing needs to be released.

#ifdef __cplusplus
extern "C"
{
#endif

    /// The state of one digest between calls. Its layout is part of the interface.
    typedef struct md5_state_s
    {
        unsigned int count[2]; ///< message length so far in bits, low word first
        unsigned int abcd[4];  ///< chaining words
        unsigned char buf[64]; ///< bytes that do not fill a block yet
    } md5_state_t;

    /// Starts a digest.
    /// @param state the record to set up; whatever it held is lost
    QUORVEX_API void md5_init(md5_state_t* state);

    /// Adds bytes to the message.
    /// @param state a record set up by md5_init
    /// @param data  the bytes; may be null when count is 0
    /// @param count how many bytes; 0 and negative counts add nothing
    QUORVEX_API void md5_append(md5_state_t* state, const unsigned char* data, int count);

    /// Ends the message and gives its digest. The record needs md5_init before it is used again.
    /// @param state  a record set up by md5_init
    /// @param digest room for 16 bytes
    QUORVEX_API void md5_finish(md5_state_t* state, unsigned char digest[16]);

#ifdef __cplusplus
}
#endif

#endif
