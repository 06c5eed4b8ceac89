// corvane.SignInThrottle as scripts see it: Delay(login, address) gives the seconds to wait (a Long,
// 0 when the attempt may go ahead); Failed(login, address) and Succeeded(login, address) report an
// attempt's result. Null and Empty arguments count as "".
#include "runtime/members.h"
#include "scripting/scripting.h"
#include "scripting/sign_in_throttle.h"

namespace corvane::scripting {

const ClassInfo& SignInThrottle::Info() const { return SignInThrottleClass(); }

const ClassInfo& SignInThrottleClass() {
  static const ClassInfo info{
      .className = "SignInThrottle",
      .progID = "corvane.SignInThrottle",
      .clsid = "{045f266f-5c44-4cbe-8498-379ba350b776}",
      .iid = "{a1662628-833c-4a98-a8a5-dcaa5706dcff}",
      .members =
          {
              Method<SignInThrottle>("Delay", 1,
                                     [](SignInThrottle&, Args& a) {
                                       return SignInThrottleTable::Process().Delay(Arg(a, 0).Text(),
                                                                                   Arg(a, 1).Text());
                                     }),
              Method<SignInThrottle>("Failed", 2,
                                     [](SignInThrottle&, Args& a) {
                                       SignInThrottleTable::Process().Failed(Arg(a, 0).Text(),
                                                                             Arg(a, 1).Text());
                                     }),
              Method<SignInThrottle>("Succeeded", 3,
                                     [](SignInThrottle&, Args& a) {
                                       SignInThrottleTable::Process().Succeeded(Arg(a, 0).Text(),
                                                                                Arg(a, 1).Text());
                                     }),
          },
      .create = Create<SignInThrottle>,
  };
  return info;
}

}  // namespace corvane::scripting
