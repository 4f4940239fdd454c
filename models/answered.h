#ifndef OVQT_MODELS_ANSWERED_H
#define OVQT_MODELS_ANSWERED_H

#include <stdexcept>

// What `ask` returns, or `otherwise` when a request in it fails: the models answer a failed request as they
// answer for an invalid handle, and no exception may leave data() and its like.
template <class Answer, class Ask>
Answer answered(Answer otherwise, Ask ask)
{
    try {
        return ask();
    } catch (const std::exception &) {
        return otherwise;
    }
}

#endif
