// The flow of result codes.
#ifndef CORVANE_CORE_RESULTS_H_
#define CORVANE_CORE_RESULTS_H_

// Returns the code of `expression` from the enclosing operation when it is a failure.
#define RETURN_IF_FAILED(expression)      \
  do {                                    \
    const HRESULT result_ = (expression); \
    if (FAILED(result_)) return result_;  \
  } while (false)

#endif  // CORVANE_CORE_RESULTS_H_
