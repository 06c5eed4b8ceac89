// aspHttp as scripts see it: an identity and no members.
#include "asp_http/asp_http.h"
#include "runtime/members.h"

namespace corvane {

const ClassInfo& AspHttpClass() {
  static const ClassInfo info{
      .className = "aspHttp",
      .progID = "corvane.aspHttp",
      .clsid = "{d9a09344-e9e5-42c0-9f54-ab9c93d40186}",
      .iid = "{2d21cb8d-f87b-4a4b-af8f-3f987cd01d57}",
      .members = {},
      .create = Create<aspHttp>,
  };
  return info;
}

const ClassInfo& aspHttp::Info() const { return AspHttpClass(); }

}  // namespace corvane
