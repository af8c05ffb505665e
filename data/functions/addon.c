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

/* values[i] = f(x[i], y[i]) for all i below count; the three arrays do not overlap. */
void r2rfunblock(const float* restrict x, const float* restrict y, float* restrict values,
                 size_t count) {
    for (size_t i = 0; i < count; i++)
        values[i] = value(x[i], y[i]);
}
