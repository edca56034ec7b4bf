#include "apps/options.h"

#include "contract/quarnel/graphmol.h"
#include "korvex/fingerprint_params.h"
#include "korvex/fpdatabaseoptions_params.h"

namespace KorvexProgram {

void AddArgument(ZQInterface& interface, const char* name, const char* brief) {
  interface.AddParameter(ZQParameter(name, "", ZQParamType::String, brief).SetPositional());
}

UntrustedText::UntrustedText() : before_(ZQThrow.SetSink(nullptr)) {
  ZQThrow.SetSink([this](ZQErrorLevel level, const std::string& message) {
    return level == ZQErrorLevel::Fatal || before_(level, message);
  });
}

void AddThreads(ZQInterface& interface) {
  interface.AddParameter(ZQParameter("-threads", "-t", ZQParamType::Int,
                                     "Threads; 0 stands for all processors, and more than twice "
                                     "their number are never started")
                             .SetLegalRange(0, 65535)
                             .SetDefault(0));
}

unsigned int GetThreads(const ZQInterface& interface) {
  return static_cast<unsigned int>(interface.Get<int>("-threads"));
}

void AddTypeOptions(ZQInterface& interface) {
  ZQConfigureFingerPrint(interface, ZQGetFPType(ZQFPType::Path));
  interface.GetInterface("fingerprint options")
      ->AddParameter(
          ZQParameter("-type", "", ZQParamType::String,
                      "The whole type in one string, in place of the options above, such as "
                      "\"Path,ver=2.0.0,size=1024,bonds=0-5,atype=AtmNum,btype=Order\""));
}

const ZQFPTypeBase* GetTypeOption(const ZQInterface& interface) {
  const ZQFPTypeBase* type = nullptr;
  if (interface.IsSet("-type")) {
    for (const char* name :
         {"-fptype", "-numbits", "-mindistance", "-maxdistance", "-atomtype", "-bondtype"}) {
      if (interface.IsSet(name)) {
        ZQThrow.Error("options -type and %s exclude each other", name);
        return nullptr;
      }
    }
    const auto text = interface.Get<std::string>("-type");
    const UntrustedText untrusted;
    type = ZQGetFPType(text);
    if (!type) {
      ZQThrow.Error("-type: '%s' names no fingerprint type, or has a number out of range",
                    text.c_str());
    }
  } else {
    type = ZQSetupFingerPrint(interface);
  }
  if (!type) return nullptr;

  ZQGraphMol methane;
  methane.NewAtom(6)->SetImplicitHCount(4);
  ZQFingerPrint fp;
  if (!ZQMakeFP(fp, methane, type)) {
    ZQThrow.Error("this build can't make fingerprints of type %s", type->GetFPTypeString().c_str());
    return nullptr;
  }
  return type;
}

void AddTverskyCoeffs(ZQInterface& interface) {
  ZQInterface* group = interface.GetInterface("fingerprint database search options");
  if (!group) group = &interface;
  const ZQFPDatabaseOptions defaults;
  group->AddParameter(ZQParameter("-alpha", "", ZQParamType::Float,
                                  "Tversky: weight of the bits that the query has alone")
                          .SetLegalRange(0.0F, 1.0F)
                          .SetDefault(defaults.GetTverskyAlpha()));
  group->AddParameter(ZQParameter("-beta", "", ZQParamType::Float,
                                  "Tversky: weight of the bits that the other one has alone")
                          .SetLegalRange(0.0F, 1.0F)
                          .SetDefault(defaults.GetTverskyBeta()));
}

void SetTverskyCoeffs(ZQFPDatabaseOptions& options, const ZQInterface& interface) {
  options.SetTverskyCoeffs(interface.Get<float>("-alpha"), interface.Get<float>("-beta"));
}

}  // namespace KorvexProgram
