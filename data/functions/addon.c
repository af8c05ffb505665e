/* The function of a sound as an add-on. The program puts two lines before this file:
 *
 *   #define EXPRESSION      the expression, in terms of x and y
 *   #define EXPRESSION_STR  the same as a string
 *
 * An add-on must define r2rfun and r2rfunstr. With r2rfunblock it is also computed for many points
 * at a time, which the compiler turns into vector instructions where it can.
 */
#include <math.h>
#include <stddef.h>

/* gcc's own gives another nonzero number in vectors than for one point. */
#undef signbit
#define signbit(x) (__builtin_signbit(x) != 0)

#if defined(__x86_64__) && defined(__GLIBC_PREREQ)
#if __GLIBC_PREREQ(2, 35)
/* The C library has these for whole vectors too, within 4 ulp. */
#define VECTOR __attribute__((simd("notinbranch")))
#define OF_ONE(name) double name(double) VECTOR; float name##f(float) VECTOR;
#define OF_TWO(name) double name(double, double) VECTOR; float name##f(float, float) VECTOR;
OF_ONE(acos) OF_ONE(acosh) OF_ONE(asin) OF_ONE(asinh) OF_ONE(atan) OF_ONE(atanh) OF_ONE(cbrt)
OF_ONE(cos) OF_ONE(cosh) OF_ONE(erf) OF_ONE(erfc) OF_ONE(exp) OF_ONE(exp2) OF_ONE(expm1)
OF_ONE(log) OF_ONE(log10) OF_ONE(log1p) OF_ONE(log2) OF_ONE(sin) OF_ONE(sinh) OF_ONE(tan)
OF_ONE(tanh) OF_TWO(atan2) OF_TWO(hypot) OF_TWO(pow)
#endif
#endif

static inline float value(float x, float y) {
    return EXPRESSION;
}

/* f(x, y) */
float r2rfun(float x, float y) {
    return value(x, y);
}

/* The expression, as it is shown. */
const char* r2rfunstr(void) {
    return EXPRESSION_STR;
}

enum { GROUP = 16 };

static __attribute__((noinline)) void group(const float* restrict x, const float* restrict y,
                         float* restrict values) {
    for (int i = 0; i < GROUP; i++)
        values[i] = value(x[i], y[i]);
}

/* values[i] = f(x[i], y[i]) for all i below count; the three arrays do not overlap. Always computed
 * in whole groups, so that a value does not depend on how many are asked for. */
void r2rfunblock(const float* restrict x, const float* restrict y, float* restrict values,
                 size_t count) {
    float lastx[GROUP] = {0};
    float lasty[GROUP] = {0};
    float last[GROUP];
    size_t i = 0;
    for (; i + GROUP <= count; i += GROUP)
        group(x + i, y + i, values + i);
    if (i == count)
        return;
    for (size_t k = i; k < count; k++) {
        lastx[k - i] = x[k];
        lasty[k - i] = y[k];
    }
    group(lastx, lasty, last);
    for (size_t k = i; k < count; k++)
        values[k] = last[k - i];
}
