// For the linker: functions that web/src/engine.ts supplies.
mergeInto(LibraryManager.library, {
  tessora_js_report: function(stage, fraction) {},
});
