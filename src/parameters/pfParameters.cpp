#include "parameters/pfParameters.h"

#include <new>

#include "diagnostics/Log.h"
#include "parameters/pfParameterBool.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterInt.h"
#include "parameters/pfParameterList.h"
#include "parameters/pfParameterPosition.h"
#include "parameters/pfParameterRGB.h"
#include "parameters/pfParameterUI.h"
#include "parameters/pfUndo.h"
#include "parameters/pfUndoBuffer.h"
#include "platform/Clock.h"
#include "platform/Random.h"

namespace mv {

namespace {

template <class Parameter>
pfParameter* CreateIf(const pfParameter* model) noexcept {
    return dynamic_cast<const Parameter*>(model) != nullptr ? new (std::nothrow) Parameter
                                                            : nullptr;
}

pfParameter* CreateOfSameClass(const pfParameter* model) noexcept {
    using Create = pfParameter* (*)(const pfParameter*) noexcept;
    constexpr Create kClasses[] = {CreateIf<pfParameterPosition>, CreateIf<pfParameterBool>,
                                   CreateIf<pfParameterInt>,      CreateIf<pfParameterFloat>,
                                   CreateIf<pfParameterList>,     CreateIf<pfParameterRGB>};
    for (const Create create : kClasses) {
        if (pfParameter* const parameter = create(model); parameter != nullptr) {
            return parameter;
        }
    }
    return nullptr;
}

template <class Parameter>
void CopyIfBothAre(const pfParameter* source, pfParameter* destination) {
    const auto* const from = dynamic_cast<const Parameter*>(source);
    auto* const to = dynamic_cast<Parameter*>(destination);
    if (from != nullptr && to != nullptr) {
        to->CopyFieldsFrom(*from);
    }
}

pfParameters* GenerateFrom(const pfParameters& model) noexcept {
    // When memory runs out, what was built so far stays behind: meant as it is.
    auto* const result = new (std::nothrow) pfParameters;
    if (result == nullptr) {
        return nullptr;
    }
    try {
        result->Reserve(static_cast<std::size_t>(model.GetCount()));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    for (int i = 0; i < model.GetCount(); ++i) {
        pfParameter* const parameter = CreateOfSameClass(model.GetParameter(i));
        if (parameter == nullptr) {
            return nullptr;
        }
        result->Add(parameter);
    }
    return result;
}

}  // namespace

pfParameter* pfParameters::GetParameter(int index) const noexcept {
    return index >= 0 && index < GetCount() ? parameters_[static_cast<std::size_t>(index)]
                                            : nullptr;
}

void pfParameters::ValidateAll() {
    for (pfParameter* const parameter : parameters_) {
        parameter->Validate();
    }
}

void pfParameters::UpdateAllUI() {
    for (const pfParameter* const parameter : parameters_) {
        if (pfParameterUI* const control = parameter->GetUI(); control != nullptr) {
            control->Refresh();
        }
    }
}

void pfParameters::RandomizeAll(double amount, pfUndoBuffer& undoBuffer) {
    SeedRandom(TickCount());
    for (pfParameter* const parameter : parameters_) {
        if (parameter->GetRandomizable()) {
            undoBuffer.Push(parameter->CreateUndo());
            parameter->Randomize(amount);
        }
    }
    undoBuffer.NextStep();
}

void pfParameters::DeleteAll() noexcept {
    while (!parameters_.empty()) {
        delete parameters_.front();
        parameters_.erase(parameters_.begin());
    }
}

pfParameters* pfParameters::Generate() const noexcept {
    WriteLog(kTrace, "pfParmeters::Generate()");
    const LogScope scope;
    pfParameters* const result = GenerateFrom(*this);
    WriteLog(kTrace, "pfParmeters::Generate( return(0x", LogPointer{result}, ") )");
    return result;
}

void pfParameters::CopyParameters(const pfParameters* source, pfParameters* destination) noexcept {
    WriteLog(kTrace, "pfParmeters::CopyParameters( pSrc(0x", LogPointer{source}, "), pDest(0x",
             LogPointer{destination}, ") )");
    const LogScope scope;
    if (source == nullptr || destination == nullptr) {
        WriteLog(kError, kErrorPrefix, "Address Pointer was Zero");
        return;
    }
    try {
        for (int i = 0; i < source->GetCount(); ++i) {
            const pfParameter* const from = source->GetParameter(i);
            pfParameter* const to = destination->GetParameter(i);
            CopyIfBothAre<pfParameterPosition>(from, to);
            CopyIfBothAre<pfParameterBool>(from, to);
            CopyIfBothAre<pfParameterInt>(from, to);
            CopyIfBothAre<pfParameterFloat>(from, to);
            CopyIfBothAre<pfParameterList>(from, to);
            CopyIfBothAre<pfParameterRGB>(from, to);
        }
    } catch (const std::bad_alloc&) {
        WriteLog(kError, kErrorPrefix, "Out of memory");
    }
}

}  // namespace mv
