// The language's operators on Variants, with its result types.
//
// Arithmetic keeps the narrowest type that holds the result, as the platform does: Integer + Integer
// is an Integer, promoted to Long when it overflows and to Double past Long; Byte, Single, Currency
// and Date take part by the platform's table (Date + number is a Date). Null in gives Null out; Empty
// counts as 0 (Integer). A text operand converts to a number (13 when it does not read as one),
// except that "+" of two texts joins them. Objects are not operands here: the interpreter reads a
// default value first.
#pragma once

#include "corvane/variant.h"

namespace corvane::script {

Variant Add(const Variant& a, const Variant& b);          // +
Variant Subtract(const Variant& a, const Variant& b);     // -
Variant Multiply(const Variant& a, const Variant& b);     // *
Variant Divide(const Variant& a, const Variant& b);       // /  (Double; 11 on division by zero)
Variant IntDivide(const Variant& a, const Variant& b);    // \  (operands rounded to Integer/Long first)
Variant Modulo(const Variant& a, const Variant& b);       // Mod
Variant Power(const Variant& a, const Variant& b);        // ^  (Double)
Variant Negate(const Variant& a);                         // unary -
Variant Concatenate(const Variant& a, const Variant& b);  // &  (Null & Null is Null, else Null is "")

// Logical on Booleans, bitwise on numbers (as Integer or Long); three-valued with Null:
// Null And False is False, Null Or True is True, otherwise Null in gives Null.
Variant Not(const Variant& a);
Variant And(const Variant& a, const Variant& b);
Variant Or(const Variant& a, const Variant& b);
Variant Xor(const Variant& a, const Variant& b);
Variant Eqv(const Variant& a, const Variant& b);
Variant Imp(const Variant& a, const Variant& b);

// = <> < <= > >=: a Boolean, or Null when either side is Null (corvane::Compare's rules).
enum class Comparison { Equal, NotEqual, Less, LessEqual, Greater, GreaterEqual };
Variant Compare(const Variant& a, const Variant& b, Comparison op);

// How If, While and Do read a condition: its Boolean value (CBool); Null is False, as the
// platform treats a Null condition; text converts ("True", "1").
bool IsTrue(const Variant& condition);

}  // namespace corvane::script
