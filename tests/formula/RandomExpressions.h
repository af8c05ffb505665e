// Random expressions of C's types whose values C defines.
#pragma once

#include <array>
#include <random>
#include <string>

namespace test {

/// Every operation in them is exact or rounded once, so that any compiler gets the same value.
class RandomExpressions {
  public:
    explicit RandomExpressions(unsigned seed) : random(seed) {}

    /// A float or double, or an integer that is converted to one.
    std::string Number(int depth) {
        if (depth == 0)
            return OneOf<9>({"x", "y", "0.1", "2.5f", "1e-3", "3.0", "7", "x*0.3f", "y*1e3"});
        const auto some = [this, depth] { return Number(depth - 1); };
        const std::string a = some(), b = some();
        switch (Roll(14)) {
        case 0:
        case 1:
            return Binary(a, OneOf<4>({" + ", " - ", "*", "/(0.5 + "}), b);
        case 2:
            return "(" + a + OneOf<6>({"<", ">", "<=", ">=", "==", "!="}) + b + "?" + some() + ":" +
                   some() + ")";
        case 3:
            return "(" + a + OneOf<2>({"&&", "||"}) + "!" + b + ")";
        case 4:
            return OneOf<4>({"(float)", "(double)", "-", "+"}) + ("(" + a + ")");
        case 5:
        case 6:
            return Named({"fabs", "floor", "ceil", "trunc", "rint", "round", "logb"}) + "(" + a +
                   ")";
        case 7:
            return Named({"fdim", "fmod", "remainder", "nextafter", "fdim", "fmod", "fdim"}) + "(" +
                   a + "," + b + ")";
        case 8:
            return Named({"sqrt", "sqrt", "sqrt", "sqrt", "sqrt", "sqrt", "sqrt"}) + "(" + a + ")";
        case 9:
            return "fma" + std::string(Roll(2) ? "f(" : "(") + a + "," + b + "," + some() + ")";
        case 10:
            return "ldexp(" + a + "," + OneOf<3>({"3", "-2", "(int)2.9"}) + ")";
        case 11:
            return OneOf<6>({"isnan", "isinf", "isfinite", "isnormal", "fpclassify", "ilogb"}) +
                   ("((double)(" + a + "))");
        case 12:
            return OneOf<3>({"isless", "isunordered", "islessgreater"}) +
                   ("((float)(" + a + "),(double)(" + b + "))");
        default:
            return Integer(depth);
        }
    }

    std::string Integer(int depth) {
        if (depth == 0)
            return OneOf<8>({"1", "7u", "0x1fL", "(short)(x*100)", "(unsigned char)(int)(y*50)",
                             "(int)(x*1e3f)", "(long long)(y*1e9)", "(_Bool)x"});
        const std::string a = Integer(depth - 1), b = Integer(depth - 1);
        switch (Roll(8)) {
        case 0:
            return "((unsigned)" + a + OneOf<3>({"+", "-", "*"}) + "(unsigned)" + b + ")";
        case 1:
            return "((unsigned long)" + a + OneOf<3>({"+", "-", "*"}) + b + ")";
        case 2:
            return "(" + a + OneOf<3>({"&", "|", "^"}) + "~" + b + ")";
        case 3:
            return "(" + a + OneOf<4>({"%7", "/3", "%11u", "/1000000007L"}) + ")";
        case 4:
            return "(" + a + ">>" + OneOf<3>({"1", "3u", "(7&9L)"}) + ")";
        case 5:
            return "((unsigned)" + a + "<<" + OneOf<3>({"1", "5", "(x<y)"}) + ")";
        case 6:
            return "(" + a + OneOf<6>({"<", ">", "<=", ">=", "==", "!="}) + b + "?" + a + ":" + b +
                   ")";
        default:
            return OneOf<6>({"(char)", "(unsigned short)", "(short)", "(int)", "(unsigned long)",
                             "(signed char)"}) +
                   ("(" + a + ")");
        }
    }

  private:
    unsigned Roll(unsigned sides) { return static_cast<unsigned>(random() % sides); }
    template<std::size_t count>
    std::string OneOf(const std::array<const char*, count>& all) {
        return all[Roll(count)];
    }
    static std::string Binary(const std::string& a, const std::string& between,
                              const std::string& b) {
        return "(" + a + between + b + (between.find('(') != std::string::npos ? "))" : ")");
    }
    std::string Named(const std::array<const char*, 7>& names) {
        return OneOf<7>(names) + (Roll(3) == 0 ? "f" : "");
    }

    std::mt19937 random;
};

} // namespace test
