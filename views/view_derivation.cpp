#include "view_derivation.h"

#include <map>

#include <QStringList>

#include <orvane/tr.h>
#include <orvanetablemodel.h>

namespace {

using Asks = ViewDerivation::Asks;
using Inputs = DerivationInputs;
using Table = OrvaneTableModel;

// The blank inside the quotes and the missing one before the first field are meant.
QString onFields(const QString &text, const QString &table, const QList<QString> &fields)
{
    QStringList quoted;
    for (const QString &field : fields) {
        quoted.append("'" + field + "'");
    }
    return text.arg(table + " ") + quoted.join(", ");
}

const std::map<Derive, ViewDerivation> derivations = {
    {Derive::Subset,
     {Asks::Expression, OvTranslation::noop("Subset expression"),
      [](const QString &table, const Inputs &inputs) {
          return OvTranslation::tr("Subset of '%1' on expression '%2'").arg(table, inputs.expression);
      },
      [](Table &table, const Inputs &inputs, const QString &name) {
          return table.subset(inputs.expression, name);
      }}},
    {Derive::Sort,
     {Asks::FieldsAndOptions, OvTranslation::noop("Sort fields"),
      [](const QString &table, const Inputs &inputs) {
          return onFields(OvTranslation::tr("Sort of '%1' on fields"), table, inputs.fields);
      },
      [](Table &table, const Inputs &inputs, const QString &name) {
          return table.sort(inputs.fields, inputs.reverse, inputs.unique, name);
      }}},
    {Derive::Group,
     {Asks::Fields, OvTranslation::noop("Group fields"),
      [](const QString &table, const Inputs &inputs) {
          return onFields(OvTranslation::tr("Group of '%1' on fields"), table, inputs.fields);
      },
      [](Table &table, const Inputs &inputs, const QString &name) {
          return table.group(inputs.fields, name);
      }}},
    {Derive::Ungroup,
     {Asks::Nothing, nullptr,
      [](const QString &table, const Inputs & /*inputs*/) {
          return OvTranslation::tr("Ungroup of '%1'").arg(table);
      },
      [](Table &table, const Inputs & /*inputs*/, const QString &name) { return table.ungroup(name); }}},
    {Derive::Join,
     {Asks::Nothing, nullptr,
      [](const QString &table, const Inputs &inputs) {
          return OvTranslation::tr("Join of '%1' to '%2'").arg(table, inputs.table);
      },
      [](Table &table, const Inputs &inputs, const QString &name) {
          return table.joinTo(inputs.table, name);
      }}},
    {Derive::OuterJoin,
     {Asks::Nothing, nullptr,
      [](const QString &table, const Inputs &inputs) {
          return OvTranslation::tr("Outer-join of '%1' to '%2'").arg(table, inputs.table);
      },
      [](Table &table, const Inputs &inputs, const QString &name) {
          return table.outerJoinTo(inputs.table, name);
      }}},
    {Derive::LeftJoin,
     {Asks::Nothing, nullptr,
      [](const QString &table, const Inputs &inputs) {
          return OvTranslation::tr("Left-join of '%1' to '%2'").arg(table, inputs.table);
      },
      [](Table &table, const Inputs &inputs, const QString &name) {
          return table.leftJoinTo(inputs.table, name);
      }}},
    {Derive::NoJoin,
     {Asks::Nothing, nullptr,
      [](const QString &table, const Inputs &inputs) {
          return OvTranslation::tr("No-join of '%1' to '%2'").arg(table, inputs.table);
      },
      [](Table &table, const Inputs &inputs, const QString &name) {
          return table.noJoinTo(inputs.table, name);
      }}},
    {Derive::ThetaJoin,
     {Asks::Expression, OvTranslation::noop("Theta-join expression"),
      [](const QString &table, const Inputs &inputs) {
          return OvTranslation::tr("Theta-join of '%1' to '%2' with expression '%3'")
              .arg(table, inputs.table, inputs.expression);
      },
      [](Table &table, const Inputs &inputs, const QString &name) {
          return table.thetaJoinTo(inputs.table, inputs.expression, name);
      }}},
    {Derive::Sever,
     {Asks::Nothing, nullptr,
      [](const QString &table, const Inputs &inputs) {
          return OvTranslation::tr("Sever of table '%1' from '%2'").arg(inputs.table, table);
      },
      [](Table &table, const Inputs &inputs, const QString &name) {
          return table.sever(inputs.table, name);
      }}},
    {Derive::Separate,
     {Asks::Nothing, nullptr,
      [](const QString &table, const Inputs &inputs) {
          return OvTranslation::tr("Separate table '%1' from '%2'").arg(inputs.table, table);
      },
      [](Table &table, const Inputs &inputs, const QString &name) {
          return table.separate(inputs.table, name);
      }}},
};

} // namespace

const ViewDerivation &viewDerivation(Derive which)
{
    return derivations.at(which);
}
