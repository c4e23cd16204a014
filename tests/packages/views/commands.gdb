set pagination off
set host-charset UTF-8
set print elements 40
set breakpoint pending off
break Stop
run
up
echo (shown)\n
print empty
print text
print lone
print long_text
print wild_text.value
print noise_text.value
print list
print wild_list.value
set print pretty on
print document
print node
print wild_node.value
print raw_document.value
set print pretty off
print message
print raw_message.value
print failed
print records
print wild_records.value
set print pretty on
print settings
print block
print wrong_offset
print raw_block.value
print wild_settings.value
