/// Models whose material numbers are to be disregarded.
#ifndef VELTRANE_PYTHON_UNNUMBERED_H
#define VELTRANE_PYTHON_UNNUMBERED_H

#include "Mesh.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace veltrane
{

/// A model all of whose materials have the same number, for any such models correspond. It is the given one, which
/// must outlive this, if that is so already, and else a copy.
template <class Model> class Unnumbered
{
public:
    explicit Unnumbered(const Model& model)
    {
        if (std::ranges::any_of(model.materials(), [](const Material& material) { return material.stateCode != 0; }))
        {
            copy_.emplace(model);
            copy_->setStateCodes(std::vector<int>(model.materials().size(), 0));
        }
        else
        {
            model_ = &model;
        }
    }

    const Model& model() const { return copy_ ? *copy_ : *model_; }

private:
    const Model* model_ = nullptr;
    std::optional<Model> copy_{};
};

} // namespace veltrane

#endif
