#include "vector/KeelTransform.h"

#include <limits>
#include <numbers>

#include "vector/KetchException.h"
#include "vector/KetchArgumentList.h"
#include "vector/KetchExecutor.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchList.h"
#include "vector/KetchNameTable.h"
#include "vector/KetchNumber.h"

namespace tw {

namespace {

constexpr Ketch::NameTable<KeelTransform, 5> kTransforms({
    {"matrix", KeelTransform::matrix},
    {"scale", KeelTransform::scale},
    {"rotate", KeelTransform::rotate},
    {"offset", KeelTransform::offset},
    {"shear", KeelTransform::shear},
});

Matrix transformOf(KeelTransform kind, const double* v, int n) {
    switch (kind) {
        case KeelTransform::matrix:
            return Matrix{{v[0], v[2], v[4], v[1], v[3], v[5]}};
        case KeelTransform::scale:
            return Matrix::scale(v[0], n == 2 ? v[1] : v[0]);
        case KeelTransform::rotate: {
            const Matrix turn = Matrix::rotate(v[0] * (std::numbers::pi / 180));
            if (n == 1) return turn;
            return compose(Matrix::translate(v[1], v[2]), compose(turn, Matrix::translate(-v[1], -v[2])));
        }
        case KeelTransform::offset:
            return Matrix::translate(v[0], v[1]);
        case KeelTransform::shear:
            return Matrix{{1, v[0], 0, v[1], 1, 0}};
    }
    return Matrix{};
}

// How many numbers each takes. A rotation takes 1 or 3, and any other count of numbers
// is an invalid rotation rather than a list of the wrong length.
struct Arity {
    int min, max;
};

Arity arityOf(KeelTransform kind) {
    switch (kind) {
        case KeelTransform::matrix: return {6, 6};
        case KeelTransform::scale: return {1, 2};
        case KeelTransform::rotate: return {0, std::numeric_limits<int>::max()};
        case KeelTransform::offset:
        case KeelTransform::shear: return {2, 2};
    }
    return {0, 0};
}

// The executor of a `transform:` text: the transform instructions on one matrix, and the
// rest of the painter's services passed on to the painter that reads the paint.
class TransformExecutor : public Ketch::Executor {
public:
    TransformExecutor(Ketch::Executor& painter, Matrix& matrix) : painter_(painter), matrix_(matrix) {}

    bool format(Ketch::Frame&, std::string_view, const std::vector<std::string>&,
                const std::vector<std::string>&) override {
        return false;
    }
    bool execute(Ketch::Frame& frame, std::string_view instruction, std::string_view arguments) override {
        const KeelTransform* kind = kTransforms.find(instruction);
        if (kind == nullptr) return false;
        applyKeelTransform(frame, *kind, arguments, matrix_);
        return true;
    }
    bool progress(Ketch::Frame& frame, std::int32_t statementsLeft) override {
        return painter_.progress(frame, statementsLeft);
    }
    bool load(Ketch::Frame& frame, std::string_view name, std::string& text) override {
        return painter_.load(frame, name, text);
    }
    void trace(Ketch::Frame& frame, std::string_view text) override { painter_.trace(frame, text); }

private:
    Ketch::Executor& painter_;
    Matrix& matrix_;
};

}  // namespace

void applyKeelTransform(Ketch::Frame& frame, KeelTransform kind, std::string_view arguments, Matrix& matrix) {
    Ketch::ArgumentList args(frame, arguments);
    const Arity arity = arityOf(kind);
    const std::vector<std::string> items = Ketch::parseList(frame, args.fetchRequired(0), true, false, arity.min, arity.max);
    args.finish();
    if (kind == KeelTransform::rotate && items.size() != 1 && items.size() != 3) {
        throw Ketch::SyntaxException("Invalid transform");
    }
    double v[6] = {};
    for (std::size_t i = 0; i < items.size(); ++i) v[i] = Ketch::toNumber(items[i]);
    matrix = compose(matrix, transformOf(kind, v, int(items.size())));
}

void runKeelTransform(Ketch::Frame& frame, std::string_view body, Matrix& matrix) {
    TransformExecutor executor(frame.executor, matrix);
    Ketch::Frame level(frame, executor);
    Ketch::runBody(level, body);
}

}  // namespace tw
