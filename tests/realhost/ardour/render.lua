-- Headless Ardour session: a stereo track whose test signal runs through HvTremolo, exported to
-- 32-bit float WAV twice, with the plug-in (wet.wav) and with it deactivated (dry.wav), and saved.
-- Prints what Ardour reports about the plug-in on lines starting with "hvt:".
--
-- ardour7-lua render.lua SESSION_DIR EXPORT_DIR LENGTH P0 P1 P2 P3 P4
--   LENGTH: samples exported after START, the first sample of the test signal (22050)
--   P0..P4: values of parameters 0 to 4; the speeds (1 and 3) are reached by the automation step
--
-- Ardour runs its plug-ins all the time, also while stopped, before an export and during the
-- export's pre-roll, so an oscillator would start the signal at a phase nobody knows. Both speeds
-- are therefore automated to 0 before START (a stage with speed 0 does not advance) and step to
-- their values at START exactly: the oscillators start the signal from the phase a fresh instance
-- has, which the test reproduces with hvtremolo-render.

local session_dir, export_dir, length = arg[1], arg[2], tonumber(arg[3])
local values = { tonumber(arg[4]), tonumber(arg[5]), tonumber(arg[6]), tonumber(arg[7]), tonumber(arg[8]) }
-- As in hvt_test_signal.lua; one beat at a new session's 120 bpm.
local start = 22050
local unique_id = "1213617208" -- 'HVT8'
local preset_uuid = "5e0f5c1a-8d7b-4a51-9f3e-4d2b1c0a9e77"

assert(AudioEngine:set_backend("None (Dummy)", "", ""), "no Dummy backend")
local s = create_session(session_dir, "hvtremolo", 44100)
assert(s, "cannot create the session")

local track = s:new_audio_track(2, 2, nil, 1, "Tremolo", ARDOUR.PresentationInfo.max_order,
	ARDOUR.TrackMode.Normal, true):front()
track:input():disconnect_all(nil)
-- Without the panner each channel goes unchanged to the same channel of the mix bus.
track:panner_shell():set_bypassed(true)

local signal = ARDOUR.LuaAPI.new_luaproc(s, "HvTremolo Test Signal")
assert(not signal:isnil(), "no test signal script")
track:add_processor_by_index(signal, 0, nil, true)

local fx = ARDOUR.LuaAPI.new_plugin(s, unique_id, ARDOUR.PluginType.LXVST, "")
assert(not fx:isnil(), "Ardour cannot load HvTremolo")
-- Added inactive: nothing runs it until its settings are complete.
track:add_processor_by_index(fx, 1, nil, false)

local plugin = fx:to_insert():plugin(0)
local info = plugin:get_info()
print(string.format("hvt:plugin %s|%s|%s|%d|%d|%d", plugin:name(), plugin:maker(),
	plugin:unique_id(), info.n_inputs:n_audio(), info.n_outputs:n_audio(),
	plugin:parameter_count()))
for i = 0, plugin:parameter_count() - 1 do
	print(string.format("hvt:parameter %d %s", i, plugin:parameter_label(i)))
end
-- Ardour offers a VST 2 plug-in's programs as its factory presets.
for i = 0, 10 do
	local preset = plugin:preset_by_uri(string.format("VST:%s:%04d", unique_id, i))
	if preset then print(string.format("hvt:program %d %s", i, preset.label)) end
end

for i = 0, 4 do
	ARDOUR.LuaAPI.set_processor_param(fx, i, (i == 1 or i == 3) and 0 or values[i + 1])
end
for _, index in ipairs({ 1, 3 }) do
	local list, control_list = ARDOUR.LuaAPI.plugin_automation(fx, index)
	assert(not list:isnil(), "no automation list")
	-- Discrete: the value steps at the point instead of ramping towards it. START is one beat at
	-- the new session's 120 bpm, so the point, kept in beat time, falls on that sample exactly.
	control_list:set_interpolation(0)
	control_list:add(Temporal.timepos_t(0), 0, false, false)
	control_list:add(Temporal.timepos_t(start), values[index + 1], false, false)
	fx:to_automatable():automation_control(
		Evoral.Parameter(ARDOUR.AutomationType.PluginAutomation, 0, index), false)
		:set_automation_state(ARDOUR.AutoState.Play)
end
fx:activate()

local function export(name)
	local e = s:simple_export()
	e:set_name(name)
	e:set_folder(export_dir)
	e:set_range(0, start + length)
	assert(e:set_preset(preset_uuid), "no float WAV export preset")
	assert(e:check_outputs(), "nothing to export")
	assert(e:run_export(), "export " .. name .. " failed")
	print("hvt:exported " .. name)
end

export("wet")
s:save_state("", false, false, false, false, false)
fx:deactivate()
export("dry")
close_session()
