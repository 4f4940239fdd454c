#ifndef NULL_HANDLE_H
#define NULL_HANDLE_H

/* Throws "QDbptr::METHOD: Attempted to call on null object". */
[[noreturn]] void throwNullHandle(const char *method);

/* The first line of a method that may, by contract, be called on a null handle: give it `this`. It takes an
 * untyped pointer because a comparison of `this` itself is what compilers take for granted. */
inline void requireHandle(const void *handle, const char *method)
{
    if (!handle)
        throwNullHandle(method);
}

#endif
