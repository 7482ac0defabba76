// A table of loans: what is paid each month and what that comes to, computed and written by XFp.
//
//     loans LOANS
//
// Each line of the file has an amount, the rate in percent a year, and the years.
#include <veldt20/numerics.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

constexpr int kMonths = 12;

struct Loan {
    double amount;
    double percent;
    double years;
};

/// Equal payments at the end of each month: their present value is the amount.
double MonthlyPayment(const Loan& loan) {
    return loan.amount / XFp::Annuity(loan.percent / 100 / kMonths, loan.years * kMonths);
}

/// With two digits behind the point, halves away from zero.
std::string Money(double amount) {
    XNDecForm fixed{1, 2};
    unsigned char text[256];
    XFp::Num2Str(&fixed, amount, text);
    return {reinterpret_cast<const char*>(text) + 1, text[0]};
}

/// The number that is written in a word of the C library's form, whatever the locale is.
double Number(const std::string& word) {
    unsigned char text[256];
    text[0] = static_cast<unsigned char>(word.copy(reinterpret_cast<char*>(text) + 1, 255));
    double number = 0;
    XFp::Str2Num(text, &number);
    return number;
}

/// What the bank asks for is a number of whole cents; the amount itself has more digits.
double RoundedToCents(double amount) {
    return Number(Money(amount));
}

void PrintRow(const Loan& loan) {
    const double payment = RoundedToCents(MonthlyPayment(loan));
    const double paid = payment * loan.years * kMonths;
    std::printf("%12s %7s %6s %12s %12s %12s\n", Money(loan.amount).c_str(),
                Money(loan.percent).c_str(), Money(loan.years).c_str(), Money(payment).c_str(),
                Money(paid).c_str(), Money(paid - loan.amount).c_str());
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    std::ifstream loans(arguments[1]);
    if (!loans) {
        std::fprintf(stderr, "%s: can't be read\n", arguments[1]);
        return 1;
    }
    std::printf("%12s %7s %6s %12s %12s %12s\n", "amount", "percent", "years", "each month", "paid",
                "interest");
    std::string amount;
    std::string percent;
    std::string years;
    while (loans >> amount >> percent >> years) {
        PrintRow({Number(amount), Number(percent), Number(years)});
    }
    return loans.eof() ? 0 : 1;
}
